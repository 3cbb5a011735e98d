#include "telephone/replay/InputWords.h"

#include <algorithm>
#include <array>

#include "telephone/access/Commands.h"
#include "telephone/display/RequestWords.h"
#include "telephone/display/SafeText.h"
#include "telephone/replay/MessageParts.h"

namespace telephone {

namespace {

// Commands about the session, time, files or the program. The replay keeps the recorded intervals itself.
constexpr std::array kNotReplayed{
    "advance", "events", "events off", "log", "quit", "raw", "record", "say", "state diff", "state save",
};

}  // namespace

bool isReplayed(std::string_view command)
{
    auto const words = splitWords(command);
    Command const* const found = words ? findCommand(*words) : nullptr;
    if (found == nullptr) {
        return true;
    }
    bool const endsRecording = found->name == "record off" && words->size() == wordsInName(*found);
    return !endsRecording && std::find(kNotReplayed.begin(), kNotReplayed.end(), found->name) == kNotReplayed.end();
}

std::string inputName(RecordedInput const& input)
{
    if (input.kind == InputKind::kRequest) {
        std::string const method = requestParts(input.text).method;
        return method.empty() ? "unknown request" : method;
    }
    auto const words = splitWords(input.text);
    Command const* const found = words ? findCommand(*words) : nullptr;
    return found == nullptr ? "unknown command" : std::string(found->name);
}

std::string inputInWords(RecordedInput const& input)
{
    return input.kind == InputKind::kRequest ? requestInWords(input.text) : safeText(input.text);
}

}  // namespace telephone
