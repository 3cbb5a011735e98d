// What the telephone says to whoever uses it: answers, events, results of commands. The application socket sends them
// as frames, HTTP as JSON, the console as readable lines.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

namespace telephone {

enum class MessageKind
{
    kRequest,   // a request in full, as it goes to the service; for those who show it
    kAnswer,    // to a request
    kEvent,     // with its number
    kFinished,  // a request is done; after its answer and its reasons, or alone if it has neither
    kError,     // the input was refused before it reached the service; a sentence
    kResult,    // of a command: text or JSON
    kReason,    // why a request was refused or did nothing; a sentence
    kGap,       // events that are no longer kept; JSON
    kState,     // the state of the telephone after a gap; JSON
};

// Indexed by the kind: the word for it in every encoding.
constexpr std::array<std::string_view, 9> kMessageKindNames{
    "request", "answer", "event", "finished", "error", "result", "reason", "gap", "state",
};
static_assert(kMessageKindNames.size() == static_cast<std::size_t>(MessageKind::kState) + 1);

struct Message
{
    MessageKind kind;
    std::string_view text;
    std::uint64_t number = 0;                         // of an event
    std::chrono::system_clock::time_point time = {};  // of a numbered event
};

using MessageSink = std::function<void(Message const&)>;

}  // namespace telephone
