#include "telephone/access/Completion.h"

#include <algorithm>

#include "CommunicationsServiceRequests.h"
#include "telephone/access/CommandSyntax.h"
#include "telephone/access/Commands.h"
#include "telephone/access/EventPattern.h"
#include "telephone/access/RequestShorthand.h"
#include "telephone/base/Names.h"
#include "telephone/protocol/Vocabulary.h"

namespace telephone {

namespace {

using Texts = std::vector<std::string>;
using Source = CompletionSource const;

Texts textsOf(std::vector<std::string_view> const& names)
{
    return {names.begin(), names.end()};
}

Texts linesOf(Source& source)
{
    Texts lines;
    for (LineStatus const& line : source.state.lines) {
        lines.push_back(line.id);
        for (LineStatus const& appearance : line.appearances) {
            lines.push_back(appearance.id);
        }
    }
    return lines;
}

Texts callsOf(Source& source)
{
    Texts calls;
    for (CallStatus const& call : source.state.calls) {
        calls.push_back(std::to_string(call.id));
    }
    return calls;
}

Texts keysOf(Source& source)
{
    Texts keys;
    for (KeyState const& key : source.state.keys) {
        if (key.number != 0) {
            keys.push_back(std::to_string(key.number));
        }
    }
    return keys;
}

struct KindRow
{
    std::string_view kind;  // of a command's argument, or form of a request's parameter
    Texts (*values)(Source&);
};

constexpr KindRow kKinds[] = {
    {"LINE", linesOf},
    {"LINES", linesOf},
    {"line id", linesOf},
    {"call id", callsOf},
    {"KEY", keysOf},
    {"SETTING", [](Source& source) { return source.settings; }},
    {"NAME", [](Source& source) { return textsOf(source.description.names()); }},
    {"EVENTS", [](Source&) { return textsOf(eventNames()); }},
    {"START", [](Source& source) { return Texts{source.state.start}; }},
};

Texts valuesOf(std::string_view kind, Source& source)
{
    auto const* const found =
        std::find_if(std::begin(kKinds), std::end(kKinds), [kind](KindRow const& each) { return each.kind == kind; });
    return found == std::end(kKinds) ? Texts() : found->values(source);
}

// A word of the pattern stands for itself, capitals for the values of their kind.
Texts nextInCommand(Command const& command, Words const& words, Source& source)
{
    Texts found;
    for (std::string const& each : CommandSyntax(command.arguments).next(words, wordsInName(command))) {
        bool const isKind =
            std::any_of(each.begin(), each.end(), [](char letter) { return letter >= 'A' && letter <= 'Z'; });
        Texts const values = isKind ? valuesOf(each, source) : Texts{each};
        found.insert(found.end(), values.begin(), values.end());
    }
    return found;
}

Texts valuesOf(RequestParameter const& parameter, Source& source)
{
    if (parameter.values == nullptr) {
        return valuesOf(parameter.form, source);
    }
    Texts values;
    for (EnumerationValue const& each : *parameter.values) {
        values.push_back(textOfValue(*parameter.values, each));
    }
    return values;
}

// The parameters that are still missing, or the values of the one that is typed.
Texts nextInRequest(RequestDescription const& request, Words const& before, std::string const& typed, Source& source)
{
    Texts found;
    for (RequestParameter const& each : request.parameters) {
        std::string const assignment = std::string(each.tag) + "=";
        bool const isGiven = std::any_of(before.begin(), before.end(),
                                         [&](std::string const& word) { return beginsIgnoringCase(word, assignment); });
        if (isGiven) {
            continue;
        }
        if (!beginsIgnoringCase(typed, assignment)) {
            found.push_back(assignment);
            continue;
        }
        for (std::string const& value : valuesOf(each, source)) {
            found.push_back(assignment + value);
        }
    }
    return found;
}

// The names that a line can begin with, after the words of a command's name that were typed.
Texts firstWords(Words const& before)
{
    Texts found;
    if (before.empty()) {
        found = textsOf(requestNames());
    }
    for (std::string_view const name : commandNames()) {
        auto const blank = name.find(' ');
        if (before.empty()) {
            found.emplace_back(name.substr(0, blank));
        } else if (blank != std::string_view::npos && before.size() == 1 &&
                   equalIgnoringCase(before[0], name.substr(0, blank))) {
            found.emplace_back(name.substr(blank + 1));
        }
    }
    found.erase(std::unique(found.begin(), found.end()), found.end());
    return found;
}

}  // namespace

std::vector<std::string> completions(std::string_view line, CompletionSource const& source)
{
    auto const blank = line.find_last_of(" \t");
    std::string const typed(blank == std::string_view::npos ? line : line.substr(blank + 1));
    Words const before = splitWords(line.substr(0, line.size() - typed.size())).value_or(Words());
    Texts found = firstWords(before);
    auto const add = [&found](Texts const& more) { found.insert(found.end(), more.begin(), more.end()); };
    if (Command const* const command = findCommand(before)) {
        add(nextInCommand(*command, before, source));
    } else if (RequestDescription const* const request = before.empty() ? nullptr : findRequest(before.front())) {
        add(nextInRequest(*request, before, typed, source));
    }
    std::erase_if(found, [&typed](std::string const& each) { return !beginsIgnoringCase(each, typed); });
    return found;
}

}  // namespace telephone
