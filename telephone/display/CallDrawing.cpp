#include "telephone/display/CallDrawing.h"

#include <algorithm>
#include <utility>

#include <spdlog/fmt/fmt.h>

#include "telephone/display/AnswerWords.h"
#include "telephone/display/LadderParts.h"
#include "telephone/display/RequestWords.h"
#include "telephone/display/SafeText.h"

namespace telephone {

namespace {

constexpr std::size_t kTimeWidth = 9;
constexpr std::size_t kFullWidth = 99;
constexpr std::size_t kLeastWidth = 75;
constexpr std::size_t kFullFarEndWidth = 34;
constexpr std::size_t kBars = 3;
constexpr auto kShortestMeanwhile = std::chrono::milliseconds(100);

}  // namespace

CallDrawing::CallDrawing(DisplayOptions options)
    : options_(std::move(options))
{
    std::size_t const width = options_.width == 0 ? kFullWidth : std::clamp(options_.width, kLeastWidth, kFullWidth);
    // The far end has less to say, and gives up less.
    farEndWidth_ = kFullFarEndWidth - (kFullWidth - width) / 4;
    applicationWidth_ = width - kTimeWidth - kBars - farEndWidth_;
}

CallDrawing::Rows CallDrawing::heading() const
{
    // Above the bars.
    return {fmt::format("s   {:{}}{:{}}far end", "application", applicationWidth_ + 2, "telephone", farEndWidth_)};
}

CallDrawing::Rows CallDrawing::request(Time time, std::string_view text)
{
    RequestWords const words = requestWords(text);
    farEnds_.noteRequest(words);
    return rows(time, {ArrowDirection::kRight, requestLabel(words), Style::kBlue});
}

CallDrawing::Rows CallDrawing::answer(Time time, std::string_view request, std::optional<std::string_view> answer)
{
    RequestWords const words = requestWords(request);
    AnswerWords const answered = answerWords(words.description, answer, options_);
    if (!answered.isFailure) {
        return rows(time, {ArrowDirection::kLeft, answered.text, Style::kPlain});
    }
    farEnds_.noteRefusal(words);
    std::string const text = std::string(ladderGlyphs(options_).cross) + " " + answered.text;
    return rows(time, {ArrowDirection::kLeft, text, Style::kMagenta});
}

CallDrawing::Rows CallDrawing::reason(std::string_view sentence) const
{
    std::string const text = fmt::format("{} {}", ladderGlyphs(options_).cross, safeText(sentence));
    return {StyledText().cell("", kTimeWidth).add(text, Style::kMagenta).line(options_)};
}

CallDrawing::Rows CallDrawing::event(std::uint64_t number, Time time, std::string_view text)
{
    std::string const begin = fmt::format("event {}: ", number);
    auto const event = readEvent(text);
    if (!event) {
        return rows(time, {ArrowDirection::kLeft, begin + safeText(text), Style::kBold});
    }
    EventWords const words = eventWords(*event, options_);
    std::string_view const method = event->description->method;
    // What went on until now is drawn before the call is in its new state.
    Rows drawn = meanwhile(time);
    auto const act = farEnds_.follow(method, words);
    Cell const farEnd =
        act ? Cell{act->isOurs ? ArrowDirection::kRight : ArrowDirection::kLeft, act->text, {}} : Cell{};
    drawn.push_back(row(time, {ArrowDirection::kLeft, begin + eventLabel(method, words.words), Style::kBold}, farEnd));
    return drawn;
}

CallDrawing::Rows CallDrawing::rows(Time time, Cell const& application)
{
    Rows drawn = meanwhile(time);
    drawn.push_back(row(time, application, {}));
    return drawn;
}

CallDrawing::Rows CallDrawing::meanwhile(Time time) const
{
    if (!first_ || time - last_ < kShortestMeanwhile) {
        return {};
    }
    double const seconds = std::chrono::duration<double>(time - last_).count();
    LadderGlyphs const& glyphs = ladderGlyphs(options_);
    Rows drawn;
    for (FarEnds::GoingOn const& each : farEnds_.goingOn()) {
        std::string const text = centredText(fmt::format("{} for {:.1f} s", each.text, seconds), farEndWidth_,
                                             each.isOnHold ? glyphs.onHold : glyphs.talk, options_);
        drawn.push_back(row("", arrow({}, applicationWidth_), StyledText().add(text, Style::kDim)));
    }
    return drawn;
}

std::string CallDrawing::row(Time time, Cell const& application, Cell const& farEnd)
{
    // An event may be older than the answer above it.
    time = std::max(time, last_);
    first_ = first_.value_or(time);
    last_ = time;
    std::string text = fmt::format("{:7.3f}", std::chrono::duration<double>(time - *first_).count());
    std::string const shown = text == timeAbove_ ? "" : text;
    timeAbove_ = std::move(text);
    return row(shown, arrow(application, applicationWidth_), arrow(farEnd, farEndWidth_));
}

std::string CallDrawing::row(std::string_view time, StyledText const& application, StyledText const& farEnd) const
{
    std::string_view const bar = ladderGlyphs(options_).bar;
    return StyledText().cell(time, kTimeWidth).add(bar).add(application).add(bar).add(farEnd).add(bar).line(options_);
}

StyledText CallDrawing::arrow(Cell const& cell, std::size_t width) const
{
    return StyledText().add(arrowText(cell.direction, cell.text, width, options_), cell.style);
}

}  // namespace telephone
