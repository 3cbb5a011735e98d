// Draws calls as they progress: a ladder of the application, the telephone and the far end, a row for each request,
// answer and event, as it happens. An event's row also shows what it says about the far end.
//
//     s   application                       telephone                   far end
//       0.000  │── OutgoingCallMakeRequest 100 ─▶│                           │
//              │◀──── event 5: dialling ─────────│─────── call to 100 ──────▶│
//
// The time is in seconds since the first row and stands where it changes. How long calls went on between two rows is
// written between them. The drawing is 99 columns wide; on a narrower terminal, down to 75, the columns are narrower.
// One thread.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "telephone/display/DisplayOptions.h"
#include "telephone/display/FarEnds.h"
#include "telephone/display/LadderParts.h"
#include "telephone/display/StyledText.h"

namespace telephone {

class CallDrawing
{
public:
    using Time = std::chrono::system_clock::time_point;
    using Rows = std::vector<std::string>;  // to print now

    explicit CallDrawing(DisplayOptions options);

    // The names of the columns; to be printed first.
    [[nodiscard]] Rows heading() const;
    Rows request(Time time, std::string_view text);
    // Nothing: the request ended without an answer.
    Rows answer(Time time, std::string_view request, std::optional<std::string_view> answer);
    // One sentence that explains the answer above it.
    Rows reason(std::string_view sentence) const;
    Rows event(std::uint64_t number, Time time, std::string_view text);

private:
    struct Cell
    {
        ArrowDirection direction = ArrowDirection::kNone;
        std::string text;
        Style style = Style::kPlain;
    };

    // A row of a request or an answer, with the rows before it that say what went on meanwhile.
    Rows rows(Time time, Cell const& application);
    [[nodiscard]] Rows meanwhile(Time time) const;
    std::string row(Time time, Cell const& application, Cell const& farEnd);
    [[nodiscard]] std::string row(std::string_view time, StyledText const& application, StyledText const& farEnd) const;
    // Blanks for a cell without a direction.
    [[nodiscard]] StyledText arrow(Cell const& cell, std::size_t width) const;

    DisplayOptions options_;
    std::size_t applicationWidth_;  // between the application and the telephone
    std::size_t farEndWidth_;       // between the telephone and the far end
    FarEnds farEnds_;
    std::optional<Time> first_;
    Time last_;
    std::string timeAbove_;
};

}  // namespace telephone
