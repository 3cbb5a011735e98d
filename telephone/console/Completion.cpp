#include "telephone/console/Completion.h"

#include "CommunicationsServiceRequests.h"
#include "telephone/base/Names.h"
#include "telephone/console/CommandInterpreter.h"
#include "telephone/console/EventPattern.h"
#include "telephone/console/RequestShorthand.h"

namespace telephone {

namespace {

void addMatching(std::vector<std::string>& found, std::vector<std::string_view> const& names, std::string_view typed)
{
    for (std::string_view const name : names) {
        if (beginsIgnoringCase(name, typed)) {
            found.emplace_back(name);
        }
    }
}

}  // namespace

std::vector<std::string> completions(std::string_view line)
{
    auto const blank = line.find_last_of(" \t");
    std::string_view const typed = blank == std::string_view::npos ? line : line.substr(blank + 1);
    std::string_view const before = trimmed(line.substr(0, line.size() - typed.size()));
    std::string_view const command = before.substr(0, before.find_first_of(" \t"));
    std::vector<std::string> found;
    if (command.empty() || equalIgnoringCase(command, "help")) {
        addMatching(found, requestNames(), typed);
        addMatching(found, CommandInterpreter::commandNames(), typed);
    }
    if (equalIgnoringCase(command, "help")) {
        addMatching(found, eventNames(), typed);
    }
    RequestDescription const* const request = command.empty() ? nullptr : findRequest(command);
    if (request == nullptr) {
        return found;
    }
    for (RequestParameter const& each : request->parameters) {
        std::string const assignment = std::string(each.tag) + "=";
        if (beginsIgnoringCase(assignment, typed) && before.find(" " + assignment) == std::string_view::npos) {
            found.push_back(assignment);
        }
    }
    return found;
}

}  // namespace telephone
