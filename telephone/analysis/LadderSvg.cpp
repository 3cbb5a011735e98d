#include "telephone/analysis/LadderSvg.h"

#include <algorithm>
#include <array>

#include <spdlog/fmt/fmt.h>

#include "telephone/display/SafeText.h"

namespace telephone {

namespace {

constexpr int kFirstColumn = 150;
constexpr std::array kGaps{250, 200, 250};
constexpr int kFurtherGap = 200;
constexpr int kForCallIds = 80;
constexpr int kBeyondLast = 90;
constexpr int kTimeRight = 92;
constexpr int kHeading = 26;
constexpr int kLifelineTop = 36;
constexpr int kFirstRow = 84;
constexpr int kRowHeight = 29;
constexpr int kPauseHeight = 46;
constexpr int kNoteHeight = 24;
constexpr int kBandMargin = 14;
constexpr double kLetterWidth = 7.3;

// The colours are as the panel has them; each is readable on the background of its theme.
constexpr std::string_view kStyle = R"(<style>
svg{--ground:#fff;--band:#f2f4f6;--text:#151a20;--quiet:#46515d;--rule:#b9c3cd;--request:#0a5bc4;--call:#5a3dbd;--fail:#ad1067}
@media(prefers-color-scheme:dark){svg{--ground:#14181e;--band:#1a2027;--text:#e9edf2;--quiet:#aab5c1;--rule:#3a4551;--request:#74b2ff;--call:#b9a3ff;--fail:#ff8fc7}}
text{font:12px ui-monospace,"SF Mono",Consolas,"Liberation Mono",monospace;fill:var(--text);text-anchor:middle}
.name{font:600 13px "Segoe UI",Roboto,"Liberation Sans",Arial,sans-serif}
.said{font:12px "Segoe UI",Roboto,"Liberation Sans",Arial,sans-serif;fill:var(--quiet)}
.ground{fill:var(--ground)}.band{fill:var(--band)}.life{stroke:var(--rule)}
.arrow{stroke:var(--quiet);stroke-width:1.4;fill:none}.head{fill:var(--quiet)}
.request .arrow{stroke:var(--request)}.request .head,.request text{fill:var(--request)}.request text,.event text{font-weight:600}
.answer .arrow,.failure .arrow{stroke-dasharray:4 3}.answer text,.platform text{fill:var(--quiet)}
.failure .arrow{stroke:var(--fail)}.failure .head,.failure text,.reason{fill:var(--fail)}
.sip .arrow{stroke:var(--call)}.sip .head{fill:var(--call)}
.reason{text-anchor:start}
g text.time{fill:var(--quiet);font-weight:400;text-anchor:end}
.talk{stroke:var(--call);stroke-width:4}.hold{stroke:var(--call);stroke-width:4;stroke-dasharray:2 5}
</style>
)";

std::string_view classOf(LadderRowKind kind)
{
    switch (kind) {
    case LadderRowKind::kRequest:
        return "request";
    case LadderRowKind::kAnswer:
        return "answer";
    case LadderRowKind::kFailure:
        return "failure";
    case LadderRowKind::kEvent:
        return "event";
    case LadderRowKind::kPlatform:
        return "platform";
    case LadderRowKind::kSip:
        return "sip";
    case LadderRowKind::kNote:
    case LadderRowKind::kPause:
        break;
    }
    return "said";
}

std::string xmlText(std::string_view text)
{
    std::string escaped;
    for (char const letter : text) {
        switch (letter) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        default:
            escaped += letter;
        }
    }
    return escaped;
}

std::string shortened(std::string_view text, int width)
{
    auto const most = static_cast<std::size_t>(width / kLetterWidth);
    return columnsOf(text) <= most ? std::string(text) : std::string(beginningOf(text, most - 1)) + "…";
}

// Draws a ladder from top to bottom.
class SvgDrawing
{
public:
    explicit SvgDrawing(Ladder const& ladder)
        : ladder_(ladder)
    {
        int place = kFirstColumn;
        for (std::size_t column = 0; column < ladder.columns.size(); ++column) {
            columns_.push_back(place);
            place += column < kGaps.size() ? kGaps.at(column) : kFurtherGap;
            place += column == kApplicationColumn && ladder.hasSeveralCalls ? kForCallIds : 0;
        }
        int y = kFirstRow - kRowHeight;
        for (LadderRow const& row : ladder.rows) {
            y += row.kind == LadderRowKind::kPause  ? kPauseHeight
                 : row.kind == LadderRowKind::kNote ? kNoteHeight
                                                    : kRowHeight;
            rows_.push_back(y);
        }
        bottom_ = y + kRowHeight + kRowHeight / 2;
    }

    std::string draw()
    {
        int const width = columns_.back() + kBeyondLast;
        svg_ = fmt::format("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 {0} {1}\" width=\"{0}\" "
                           "height=\"{1}\" role=\"img\" aria-labelledby=\"title description\">\n"
                           "<title id=\"title\">{2}</title>\n<desc id=\"description\">{3}</desc>\n{4}"
                           "<rect class=\"ground\" width=\"100%\" height=\"100%\"/>\n",
                           width, bottom_ + kNoteHeight, xmlText(ladder_.title), xmlText(description()), kStyle);
        addWire();
        addColumns();
        addBars();
        for (std::size_t index = 0; index < ladder_.rows.size(); ++index) {
            addRow(ladder_.rows[index], rows_[index]);
        }
        return svg_ + "</svg>\n";
    }

private:
    // Every row as a phrase.
    [[nodiscard]] std::string description() const
    {
        std::string text;
        for (LadderRow const& row : ladder_.rows) {
            text += text.empty() ? "" : "; ";
            if (row.kind == LadderRowKind::kPause) {
                text += pauseText(row);
            } else {
                text += row.from == row.to ? row.text
                                           : fmt::format("{} from {} to {}", row.text, ladder_.columns[row.from],
                                                         ladder_.columns[row.to]);
            }
        }
        return text;
    }

    static std::string pauseText(LadderRow const& row)
    {
        std::string text;
        for (LadderPause const& each : row.pauses) {
            text += (text.empty() ? "" : ", ") + each.text;
        }
        return text.empty() ? row.text + " later" : text;
    }

    void addWire()
    {
        if (columns_.size() <= kFirstFarEnd) {
            return;
        }
        int const left = columns_[kEngineColumn] + kBandMargin;
        int const width = columns_.back() - kBandMargin - left;
        svg_ += fmt::format("<rect class=\"band\" x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\" rx=\"6\"/>\n"
                            "<text class=\"said\" x=\"{}\" y=\"52\">wire</text>\n",
                            left, kLifelineTop - 2, width, bottom_ - kLifelineTop, left + width / 2);
    }

    void addColumns()
    {
        for (std::size_t column = 0; column < columns_.size(); ++column) {
            int const room = column < kGaps.size() ? kGaps.at(column) : kFurtherGap;
            svg_ += fmt::format("<text class=\"name\" x=\"{0}\" y=\"{1}\">{2}</text>"
                                "<line class=\"life\" x1=\"{0}\" x2=\"{0}\" y1=\"{3}\" y2=\"{4}\"/>\n",
                                columns_[column], kHeading, xmlText(shortened(ladder_.columns[column], room)),
                                kLifelineTop, bottom_);
        }
    }

    void addBars()
    {
        for (LadderBar const& bar : ladder_.bars) {
            svg_ += fmt::format("<line class=\"{0}\" x1=\"{1}\" x2=\"{1}\" y1=\"{2}\" y2=\"{3}\"/>\n",
                                bar.isOnHold ? "hold" : "talk", columns_[bar.column], rows_[bar.first], rows_[bar.end]);
        }
    }

    void addRow(LadderRow const& row, int y)
    {
        switch (row.kind) {
        case LadderRowKind::kPause:
            return addPause(row, y);
        case LadderRowKind::kNote:
            return addNote(row, y);
        case LadderRowKind::kRequest:
        case LadderRowKind::kAnswer:
        case LadderRowKind::kFailure:
        case LadderRowKind::kEvent:
        case LadderRowKind::kPlatform:
        case LadderRowKind::kSip:
            break;
        }
        addArrow(row, y);
    }

    void addArrow(LadderRow const& row, int y)
    {
        constexpr int kHead = 8;
        int const from = columns_[row.from];
        int const to = columns_[row.to];
        int const back = to > from ? -kHead : kHead;
        // The text stands next to the far end.
        std::size_t const outer = std::max(row.from, row.to);
        int const gap = columns_[outer] - columns_[outer - 1];
        std::string const text = shortened(row.text, gap - 2 * kHead);
        std::string const whole = text == row.text ? "" : fmt::format("<title>{}</title>", xmlText(row.text));
        svg_ +=
            fmt::format("<g class=\"{0}\">{1}{2}<path class=\"arrow\" d=\"M{3} {4}H{5}\"/>"
                        "<path class=\"head\" d=\"M{6} {4}l{7} -4v8z\"/><text x=\"{8}\" y=\"{9}\">{10}</text></g>\n",
                        classOf(row.kind), whole, timeText(row, y), from, y, to + back, to, back,
                        columns_[outer] - gap / 2, y - 5, xmlText(text));
    }

    // Empty where the time has not changed.
    std::string timeText(LadderRow const& row, int y)
    {
        std::string text = fmt::format("{:.3f} s", std::chrono::duration<double>(row.time).count());
        bool const isShown = text != timeAbove_;
        timeAbove_ = text;
        return isShown ? fmt::format("<text class=\"time\" x=\"{}\" y=\"{}\">{}</text>", kTimeRight, y + 4, text) : "";
    }

    void addPause(LadderRow const& row, int y)
    {
        constexpr int kBaseline = 5;
        for (LadderPause const& each : row.pauses) {
            int const right = columns_[each.column];
            int const left = columns_[each.column - 1];
            svg_ += fmt::format("<text class=\"said\" x=\"{}\" y=\"{}\">{}</text>\n", (left + right) / 2, y + kBaseline,
                                xmlText(each.text));
        }
        if (row.pauses.empty()) {
            svg_ += fmt::format("<text class=\"said\" x=\"{}\" y=\"{}\">{} later</text>\n",
                                (columns_[kApplicationColumn] + columns_[kServiceColumn]) / 2, y + kBaseline, row.text);
        }
    }

    void addNote(LadderRow const& row, int y)
    {
        bool const isReason = row.from == kApplicationColumn;
        svg_ += fmt::format("<text class=\"{}\" x=\"{}\" y=\"{}\">{}</text>\n", isReason ? "reason" : "said",
                            isReason ? kFirstColumn + kBandMargin : columns_[row.from] - kFurtherGap / 2, y,
                            xmlText(row.text));
    }

    Ladder const& ladder_;
    std::vector<int> columns_;  // x of each
    std::vector<int> rows_;     // y of each
    int bottom_ = 0;
    std::string svg_;
    std::string timeAbove_;
};

}  // namespace

std::string ladderSvg(Ladder const& ladder)
{
    return SvgDrawing(ladder).draw();
}

}  // namespace telephone
