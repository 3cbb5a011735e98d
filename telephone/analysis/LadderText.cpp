#include "telephone/analysis/LadderText.h"

#include <algorithm>
#include <numeric>

#include <spdlog/fmt/fmt.h>

#include "telephone/display/LadderParts.h"
#include "telephone/display/SafeText.h"
#include "telephone/display/StyledText.h"

namespace telephone {

namespace {

constexpr std::size_t kTimeWidth = 9;
constexpr std::size_t kLeastGap = 14;
constexpr std::size_t kLeastFarGap = 23;  // "they talk for 1.2 s"

Style styleOf(LadderRowKind kind)
{
    switch (kind) {
    case LadderRowKind::kRequest:
        return Style::kBlue;
    case LadderRowKind::kFailure:
        return Style::kMagenta;
    case LadderRowKind::kEvent:
        return Style::kBold;
    case LadderRowKind::kPause:
        return Style::kDim;
    case LadderRowKind::kAnswer:
    case LadderRowKind::kPlatform:
    case LadderRowKind::kSip:
    case LadderRowKind::kNote:
        break;
    }
    return Style::kPlain;
}

// Draws a ladder row by row.
class TextDrawing
{
public:
    TextDrawing(Ladder const& ladder, DisplayOptions const& options)
        : ladder_(ladder)
        , options_(options)
        , glyphs_(ladderGlyphs(options))
    {
        measure();
    }

    std::vector<std::string> draw()
    {
        std::vector<std::string> lines{heading()};
        for (std::size_t index = 0; index < ladder_.rows.size(); ++index) {
            lines.push_back(row(index).line(options_));
        }
        return lines;
    }

private:
    // The gaps between the columns, narrower if the terminal is.
    void measure()
    {
        constexpr std::size_t kTextGaps[] = {34, 23, 29};
        constexpr std::size_t kFurtherTextGap = 23;
        constexpr std::size_t kMostMore = 16;
        for (std::size_t index = 0; index + 1 < ladder_.columns.size(); ++index) {
            std::size_t const usual = index < std::size(kTextGaps) ? kTextGaps[index] : kFurtherTextGap;
            gaps_.push_back(std::clamp(roomFor(index), usual, usual + kMostMore));
        }
        std::size_t const bars = kTimeWidth + ladder_.columns.size();
        std::size_t const full = std::accumulate(gaps_.begin(), gaps_.end(), std::size_t{0});
        if (options_.width == 0 || bars + full <= options_.width) {
            return;
        }
        std::size_t const room = options_.width > bars ? options_.width - bars : 0;
        for (std::size_t index = 0; index < gaps_.size(); ++index) {
            std::size_t const least = index < kEngineColumn ? kLeastGap : kLeastFarGap;
            gaps_[index] = std::max(least, gaps_[index] * room / full);
        }
    }

    // For the longest text in the gap.
    [[nodiscard]] std::size_t roomFor(std::size_t gap) const
    {
        constexpr std::size_t kAroundText = 5;
        std::size_t longest = 0;
        for (LadderRow const& row : ladder_.rows) {
            bool const isHere = row.from != row.to && std::max(row.from, row.to) == gap + 1;
            longest = isHere ? std::max(longest, columnsOf(row.text)) : longest;
        }
        return longest + kAroundText;
    }

    [[nodiscard]] std::size_t placeOf(std::size_t column) const
    {
        return std::accumulate(gaps_.begin(), gaps_.begin() + static_cast<std::ptrdiff_t>(column), kTimeWidth + column);
    }

    // Each name in the middle above its bar.
    [[nodiscard]] std::string heading() const
    {
        std::string text = "s";
        for (std::size_t column = 0; column < ladder_.columns.size(); ++column) {
            std::size_t const most = column == 0 ? gaps_[0] : gaps_[column - 1] - 2;
            std::string const whole = options_.ascii ? asciiText(ladder_.columns[column]) : ladder_.columns[column];
            std::string const name(beginningOf(whole, most));
            std::size_t const begin = placeOf(column) - std::min(placeOf(column), columnsOf(name) / 2);
            std::size_t const width = columnsOf(text);
            text += std::string(begin > width ? begin - width : 1, ' ') + name;
        }
        return StyledText().add(text).line(options_);
    }

    StyledText row(std::size_t index)
    {
        LadderRow const& row = ladder_.rows[index];
        if (row.kind == LadderRowKind::kNote) {
            bool const isReason = row.from == kApplicationColumn;
            return StyledText().cell("", kTimeWidth).add(row.text, isReason ? Style::kMagenta : Style::kPlain);
        }
        StyledText line;
        line.cell(row.kind == LadderRowKind::kPause ? "" : shownTime(row), kTimeWidth);
        for (std::size_t column = 0; column < ladder_.columns.size(); ++column) {
            line.add(barGlyph(column, index));
            if (column < gaps_.size()) {
                line.add(row.kind == LadderRowKind::kPause ? pauseIn(row, column) : arrowIn(row, column),
                         styleOf(row.kind));
            }
        }
        return line;
    }

    std::string shownTime(LadderRow const& row)
    {
        constexpr auto kLongest = std::chrono::seconds(10'000);  // that has room with milliseconds
        double const seconds = std::chrono::duration<double>(row.time).count();
        std::string text = row.time < kLongest ? fmt::format("{:7.3f}", seconds) : fmt::format("{:7.0f}", seconds);
        std::string const shown = text == timeAbove_ ? "" : text;
        timeAbove_ = std::move(text);
        return shown;
    }

    [[nodiscard]] std::string_view barGlyph(std::size_t column, std::size_t index) const
    {
        LadderRow const& row = ladder_.rows[index];
        bool const isCrossed = row.kind != LadderRowKind::kPause && column > std::min(row.from, row.to) &&
                               column < std::max(row.from, row.to);
        if (isCrossed) {
            return options_.ascii ? "+" : "┼";
        }
        auto const bar = std::find_if(ladder_.bars.begin(), ladder_.bars.end(), [&](LadderBar const& each) {
            return each.column == column && index > each.first && index <= each.end;
        });
        return bar == ladder_.bars.end() ? glyphs_.bar : bar->isOnHold ? glyphs_.holdBar : glyphs_.talkBar;
    }

    // The part of the row's arrow in the gap behind the column. The text stands next to the far end.
    [[nodiscard]] std::string arrowIn(LadderRow const& row, std::size_t column) const
    {
        std::size_t const width = gaps_[column];
        std::size_t const left = std::min(row.from, row.to);
        std::size_t const right = std::max(row.from, row.to);
        if (column < left || column >= right) {
            return std::string(width, ' ');
        }
        bool const isLeft = row.to < row.from;
        bool const hasText = column + 1 == right;
        bool const hasHead = column + 1 == right ? !isLeft || right - left == 1 : isLeft && column == left;
        if (hasText && hasHead) {
            return arrowText(isLeft ? ArrowDirection::kLeft : ArrowDirection::kRight, row.text, width, options_);
        }
        if (hasText) {
            return centredText(row.text, width, glyphs_.shaft, options_);
        }
        return shaft(width, hasHead);
    }

    [[nodiscard]] std::string shaft(std::size_t width, bool hasLeftHead) const
    {
        std::string text(hasLeftHead ? glyphs_.leftHead : glyphs_.shaft);
        for (std::size_t index = 1; index < width; ++index) {
            text += glyphs_.shaft;
        }
        return text;
    }

    [[nodiscard]] std::string pauseIn(LadderRow const& row, std::size_t gap) const
    {
        auto const found = std::find_if(row.pauses.begin(), row.pauses.end(),
                                        [gap](LadderPause const& each) { return each.column == gap + 1; });
        if (found != row.pauses.end()) {
            std::string_view const filling = found->isTalk ? glyphs_.talk : found->isOnHold ? glyphs_.onHold : " ";
            return centredText(found->text, gaps_[gap], filling, options_);
        }
        bool const saysTime = row.pauses.empty() && gap == 0;
        return saysTime ? centredText(row.text + " later", gaps_[gap], " ", options_) : std::string(gaps_[gap], ' ');
    }

    Ladder const& ladder_;
    DisplayOptions const& options_;
    LadderGlyphs const& glyphs_;
    std::vector<std::size_t> gaps_;
    std::string timeAbove_;
};

}  // namespace

std::vector<std::string> ladderText(Ladder const& ladder, DisplayOptions const& options)
{
    return TextDrawing(ladder, options).draw();
}

}  // namespace telephone
