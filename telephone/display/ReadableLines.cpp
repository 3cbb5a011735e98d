#include "telephone/display/ReadableLines.h"

#include <ctime>

#include <spdlog/fmt/chrono.h>
#include <spdlog/fmt/fmt.h>

#include "telephone/display/AnswerWords.h"
#include "telephone/display/ElementWords.h"
#include "telephone/display/LampWords.h"
#include "telephone/display/RequestWords.h"
#include "telephone/display/SafeText.h"
#include "telephone/time/SteadyClock.h"

namespace telephone {

namespace {

struct Mark
{
    std::string_view utf8;
    std::string_view ascii;
};

constexpr Mark kRequestMark{"→", ">"};
constexpr Mark kAnswerMark{"←", "<"};
constexpr Mark kReasonMark{"✕", "x"};
constexpr Mark kStepMark{"✓", "+"};

std::string markText(Mark const& mark, DisplayOptions const& options, char letter = '\0')
{
    std::string text(options.ascii ? mark.ascii : mark.utf8);
    return letter == '\0' ? text : text + letter;
}

}  // namespace

std::string clockText(ReadableLines::Time time, DisplayOptions const& options)
{
    auto const inSeconds = std::chrono::floor<std::chrono::seconds>(time);
    auto const milliseconds = std::chrono::floor<std::chrono::milliseconds>(time - inSeconds).count();
    std::tm const parts = options.utc ? utcCalendar(time) : localCalendar(time);
    std::string const day = options.date ? fmt::format("{:%Y-%m-%d} ", parts) : "";
    return fmt::format("{}{:%H:%M:%S}.{:03}{}", day, parts, milliseconds, options.utc ? "Z" : "");
}

std::string durationText(std::chrono::steady_clock::duration took)
{
    auto const milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(took).count();
    if (milliseconds >= 1000) {
        return fmt::format("{:.1f} s", static_cast<double>(milliseconds) / 1000);
    }
    return milliseconds < 1 ? "<1 ms" : fmt::format("{} ms", milliseconds);
}

std::string ReadableLines::event(std::uint64_t number, Time time, std::string_view text)
{
    std::string const mark = std::to_string(number);
    auto const event = readEvent(text);
    if (!event) {
        return begin(time, mark, Style::kPlain, "", "").add(safeText(text)).line(options_);
    }
    EventWords const words = eventWords(*event, options_);
    return begin(time, mark, Style::kPlain, words.line, words.call)
        .cell(words.words.what, kWhatWidth, Style::kBold)
        .add(words.words.detailText())
        .line(options_);
}

std::string ReadableLines::request(Time time, std::string_view text, char letter)
{
    RequestWords const words = requestWords(text);
    StyledText line = begin(time, markText(kRequestMark, options_, letter), Style::kBlue, words.line, words.call);
    line.cell(words.name, kWhatWidth, Style::kBlue);
    for (RequestValue const& each : words.values) {
        line.add(each.tag + "=", Style::kDim).add(each.text + " ");
    }
    return line.add(words.body).line(options_);
}

std::string ReadableLines::answer(Time time, Answer const& answer)
{
    RequestWords const request = requestWords(answer.request);
    AnswerWords const words = answerWords(request.description, answer.text, options_);
    return begin(time, markText(kAnswerMark, options_, answer.letter), Style::kPlain, request.line, request.call)
        .cell(words.text, 0, words.isFailure ? Style::kMagenta : Style::kBold)
        .add(durationText(answer.took), Style::kDim)
        .add(answer.notAsAsked ? ", not as asked" : "")
        .line(options_);
}

std::string ReadableLines::reason(Time time, std::string_view line, std::string_view call, std::string_view sentence)
{
    // Whole, for whoever has to act on it.
    DisplayOptions uncut = options_;
    uncut.width = 0;
    return begin(time, markText(kReasonMark, options_), Style::kMagenta, safeWord(line), safeWord(call))
        .add(safeText(sentence), Style::kMagenta)
        .line(uncut);
}

std::string ReadableLines::step(Time time, std::string_view text, std::chrono::steady_clock::duration took)
{
    return begin(time, markText(kStepMark, options_), Style::kPlain, "", "")
        .cell("passed", kWhatWidth, Style::kBold)
        .cell(safeText(text), 0)
        .add(durationText(took), Style::kDim)
        .line(options_);
}

std::string ReadableLines::lamp(Time time, KeyState const& key, TelephoneState const& state)
{
    return begin(time, "lamp", Style::kPlain, safeWord(lampName(key)), "")
        .cell(lampWords(key.lamp), kWhatWidth, lampStyle(key.lamp))
        .add(safeText(lampMeaning(key, state)))
        .line(options_);
}

std::string ReadableLines::gap(Time time, std::uint64_t first, std::uint64_t last)
{
    std::string const events =
        first == last ? fmt::format("event {}", first) : fmt::format("events {} to {}", first, last);
    return begin(time, "gap", Style::kMagenta, "", "")
        .cell(events, kWhatWidth, Style::kMagenta)
        .add(first == last ? "was missed; the state follows" : "were missed; the state follows", Style::kMagenta)
        .line(options_);
}

StyledText ReadableLines::begin(Time time, std::string_view mark, Style style, std::string_view line,
                                std::string_view call)
{
    constexpr std::size_t kMarkWidth = 6;
    std::string text = clockText(time, options_);
    StyledText begun;
    begun.add(text, text == timeAbove_ ? Style::kDim : Style::kPlain);
    timeAbove_ = std::move(text);
    std::size_t const width = columnsOf(mark);
    std::string const blanks(width < kMarkWidth ? kMarkWidth - width : 1, ' ');
    begun.add(blanks).add(mark, style).add("  ");
    return begun.cell(line, kLineWidth).cell(call, kCallWidth);
}

}  // namespace telephone
