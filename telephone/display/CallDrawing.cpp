#include "telephone/display/CallDrawing.h"

#include <algorithm>
#include <utility>

#include <spdlog/fmt/fmt.h>
#include <spdlog/fmt/ranges.h>

#include "telephone/display/AnswerWords.h"
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

struct Glyphs
{
    std::string_view bar;
    std::string_view shaft;
    std::string_view leftHead;
    std::string_view rightHead;
    std::string_view talk;
    std::string_view onHold;
    std::string_view cross;
    std::string_view ellipsis;
};

constexpr Glyphs kUtf8Glyphs{"│", "─", "◀", "▶", "═", "┄", "✕", "…"};
constexpr Glyphs kAsciiGlyphs{"|", "-", "<", ">", "=", ".", "x", "..."};

Glyphs const& glyphsFor(DisplayOptions const& options)
{
    return options.ascii ? kAsciiGlyphs : kUtf8Glyphs;
}

std::string repeated(std::string_view text, std::size_t count)
{
    std::string result;
    for (std::size_t index = 0; index < count; ++index) {
        result += text;
    }
    return result;
}

// "HoldCall, call 1", "OutgoingCallMakeRequest 100".
std::string requestLabel(RequestWords const& request)
{
    auto const destination = std::find_if(request.values.begin(), request.values.end(),
                                          [](RequestValue const& each) { return each.tag == "Destination"; });
    if (destination != request.values.end()) {
        return request.name + " " + destination->text;
    }
    return request.call.empty() ? request.name : request.name + ", call " + request.call;
}

// The party stands in the column of the far end. A state is said in a word, unless there is a reason for it.
std::string eventLabel(std::string_view method, MessageWords const& words)
{
    bool const isPlainState = method == "CallStateChangeEvent" && words.what != "idle" && words.what != "failed";
    return isPlainState || words.details.empty() ? words.what
                                                 : fmt::format("{}, {}", words.what, fmt::join(words.details, ", "));
}

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
    return rows(time, {Direction::kRight, requestLabel(words), Style::kBlue});
}

CallDrawing::Rows CallDrawing::answer(Time time, std::string_view request, std::optional<std::string_view> answer)
{
    RequestWords const words = requestWords(request);
    AnswerWords const answered = answerWords(words.description, answer, options_);
    if (!answered.isFailure) {
        return rows(time, {Direction::kLeft, answered.text, Style::kPlain});
    }
    farEnds_.noteRefusal(words);
    std::string const text = std::string(glyphsFor(options_).cross) + " " + answered.text;
    return rows(time, {Direction::kLeft, text, Style::kMagenta});
}

CallDrawing::Rows CallDrawing::reason(std::string_view sentence) const
{
    std::string const text = fmt::format("{} {}", glyphsFor(options_).cross, safeText(sentence));
    return {StyledText().cell("", kTimeWidth).add(text, Style::kMagenta).line(options_)};
}

CallDrawing::Rows CallDrawing::event(std::uint64_t number, Time time, std::string_view text)
{
    std::string const begin = fmt::format("event {}: ", number);
    auto const event = readEvent(text);
    if (!event) {
        return rows(time, {Direction::kLeft, begin + safeText(text), Style::kBold});
    }
    EventWords const words = eventWords(*event, options_);
    std::string_view const method = event->description->method;
    // What went on until now is drawn before the call is in its new state.
    Rows drawn = meanwhile(time);
    auto const act = farEnds_.follow(method, words);
    Cell const farEnd = act ? Cell{act->isOurs ? Direction::kRight : Direction::kLeft, act->text, {}} : Cell{};
    drawn.push_back(row(time, {Direction::kLeft, begin + eventLabel(method, words.words), Style::kBold}, farEnd));
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
    Glyphs const& glyphs = glyphsFor(options_);
    Rows drawn;
    for (FarEnds::GoingOn const& each : farEnds_.goingOn()) {
        std::string const text = centred(fmt::format("{} for {:.1f} s", each.text, seconds), farEndWidth_,
                                         each.isOnHold ? glyphs.onHold : glyphs.talk);
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
    std::string_view const bar = glyphsFor(options_).bar;
    return StyledText().cell(time, kTimeWidth).add(bar).add(application).add(bar).add(farEnd).add(bar).line(options_);
}

StyledText CallDrawing::arrow(Cell const& cell, std::size_t width) const
{
    if (cell.direction == Direction::kNone) {
        return StyledText().add(std::string(width, ' '));
    }
    Glyphs const& glyphs = glyphsFor(options_);
    std::string const shaft = centred(cell.text, width - 1, glyphs.shaft);
    bool const isLeft = cell.direction == Direction::kLeft;
    return StyledText().add(isLeft ? std::string(glyphs.leftHead) + shaft : shaft + std::string(glyphs.rightHead),
                            cell.style);
}

std::string CallDrawing::centred(std::string_view text, std::size_t width, std::string_view filling) const
{
    constexpr std::size_t kShortestFilling = 2;  // with a blank, on each side
    std::string shown = options_.ascii ? asciiText(text) : std::string(text);
    std::size_t const room = width - 2 * kShortestFilling;
    if (columnsOf(shown) > room) {
        std::string_view const ellipsis = glyphsFor(options_).ellipsis;
        shown = std::string(beginningOf(shown, room - columnsOf(ellipsis))).append(ellipsis);
    }
    std::size_t const free = width - columnsOf(shown) - 2;
    return repeated(filling, free / 2) + " " + shown + " " + repeated(filling, free - free / 2);
}

}  // namespace telephone
