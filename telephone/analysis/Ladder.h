// A call of a trace as a ladder: its parties are columns, what they say to each other are arrows in time. Plain values;
// LadderText and LadderSvg draw them.
//
// A ladder contains what is said about the chosen calls: requests with their answers, events, platform calls that do
// something to a call, and the SIP messages of their dialogs, but for 100 Trying. Registrations, subscriptions and
// getters stay out.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "telephone/analysis/TracedStep.h"
#include "telephone/base/Refusal.h"
#include "telephone/display/DisplayOptions.h"

namespace telephone {

// The columns that every ladder has; the far ends follow.
enum LadderColumn : std::size_t
{
    kApplicationColumn,
    kServiceColumn,
    kEngineColumn,
    kFirstFarEnd,
};

enum class LadderRowKind
{
    kRequest,
    kAnswer,
    kFailure,
    kEvent,
    kPlatform,
    kSip,
    kNote,   // a sentence, not an arrow: the reason of a failure, a timer that ran out
    kPause,  // time passes
};

// What goes on meanwhile at a far end.
struct LadderPause
{
    std::size_t column;
    bool isOnHold;
    bool isTalk;
    std::string text;  // "they talk for 0.8 s"
};

struct LadderRow
{
    LadderRowKind kind = LadderRowKind::kNote;
    std::size_t from = 0;               // column
    std::size_t to = 0;                 // column
    std::string text;                   // safe
    std::chrono::milliseconds time{0};  // since the first row
    std::vector<LadderPause> pauses = {};
};

// What a far end does during some rows: from the first one to the end one, both included.
struct LadderBar
{
    std::size_t column;
    std::size_t first;
    std::size_t end;
    bool isOnHold;  // false: it talks
};

struct Ladder
{
    std::string title;                 // "A call to 100"
    bool hasSeveralCalls = false;      // texts name their calls
    std::vector<std::string> columns;  // names, safe
    std::vector<LadderRow> rows;
    std::vector<LadderBar> bars;
};

// The call with that id; without an id all calls of the trace. If there are more far ends than `mostFarEnds`, some
// share a column, preferably those that are never there at the same time. Refused if the trace has no such call.
[[nodiscard]] Outcome<Ladder> ladderOf(TraceContents const& contents, std::optional<std::string_view> call,
                                       std::size_t mostFarEnds, DisplayOptions const& options);

}  // namespace telephone
