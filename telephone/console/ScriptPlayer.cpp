#include "telephone/console/ScriptPlayer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <utility>

#include <spdlog/fmt/fmt.h>

#include "telephone/access/Commands.h"
#include "telephone/access/RequestShorthand.h"
#include "telephone/access/TelephoneControls.h"
#include "telephone/base/Names.h"
#include "telephone/console/Placeholders.h"
#include "telephone/console/ScriptOptions.h"
#include "telephone/console/Transcript.h"
#include "telephone/display/ElementWords.h"
#include "telephone/display/PanelDrawing.h"
#include "telephone/protocol/ProtocolCheck.h"
#include "telephone/protocol/Vocabulary.h"

namespace telephone {

namespace {

using namespace std::chrono_literals;

constexpr double kUsualSeconds = 10;
constexpr auto kLampPoll = 10ms;
constexpr std::size_t kMostShown = 20;

bool isSecondsUnit(std::string const& word)
{
    return word == "s" || word == "second" || word == "seconds";
}

Conversation::Clock::time_point after(double seconds)
{
    return Conversation::Clock::now() +
           std::chrono::duration_cast<Conversation::Clock::duration>(std::chrono::duration<double>(seconds));
}

tl::unexpected<Refusal> usage(std::string const& form)
{
    return refuse(RefusalKind::kBadInput, "write it as: " + form);
}

// A step did not succeed.
tl::unexpected<Refusal> failure(std::string reason)
{
    return refuse(RefusalKind::kWrongState, std::move(reason));
}

struct TimedStep
{
    Words words;
    std::optional<double> seconds;
};

// Separates "within SECONDS" from the end of a step.
Outcome<TimedStep> splitTime(Words const& words)
{
    auto const found = std::find_if(words.begin(), words.end(),
                                    [](std::string const& word) { return equalIgnoringCase(word, "within"); });
    if (found == words.end()) {
        return TimedStep{words, std::nullopt};
    }
    Words const rest(found + 1, words.end());
    if (rest.empty() || rest.size() > 2 || (rest.size() == 2 && !isSecondsUnit(rest[1]))) {
        return usage("within SECONDS, at the end of the line");
    }
    return secondsOf(rest[0]).map([&](double seconds) { return TimedStep{{words.begin(), found}, seconds}; });
}

double secondsSince(Conversation::Clock::time_point start)
{
    return std::chrono::duration<double>(Conversation::Clock::now() - start).count();
}

// The words of a step whose value cannot be checked before it runs.
Words withoutPlaceholders(Words words)
{
    std::erase_if(words, [](std::string const& word) { return splitAssignment(word) && hasPlaceholder(word); });
    return words;
}

// Compares the whole answer, or its beginning up to a comma or the first element.
Outcome<std::vector<std::string>> rowsOfFile(std::string const& path)
{
    std::ifstream file(path);
    if (!file) {
        return refuse(RefusalKind::kNotFound, fmt::format("cannot read {}: {}", path, std::strerror(errno)));
    }
    std::vector<std::string> rows;
    for (std::string row; std::getline(file, row);) {
        rows.push_back(row);
    }
    return rows;
}

// Empty: there is none.
std::string firstDifference(std::vector<std::string> const& present, std::vector<std::string> const& expected)
{
    auto const row = [](std::vector<std::string> const& rows, std::size_t number) {
        return number < rows.size() ? rows[number] : std::string("missing");
    };
    for (std::size_t i = 0; i < std::max(present.size(), expected.size()); ++i) {
        if (row(present, i) != row(expected, i)) {
            return fmt::format("row {} is {} and not {}", i + 1, row(present, i), row(expected, i));
        }
    }
    return {};
}

bool answers(std::string const& answer, std::string const& expected)
{
    return answer == expected || answer.substr(0, answer.find_first_of(",<")) == expected;
}

}  // namespace

ScriptPlayer::ScriptPlayer(Conversation& conversation)
    : conversation_(conversation)
{
    conversation_.listen([this](std::string const& event) { journal_.add(event); });
}

ScriptPlayer::~ScriptPlayer()
{
    conversation_.listen(nullptr);
}

std::string failureText(std::string const& script, ScriptFailure const& failure)
{
    return fmt::format("{}:{}: {}: {}", script, failure.line, failure.step, failure.reason);
}

ScriptResult ScriptPlayer::play(std::istream& script, std::string const& name)
{
    std::vector<Line> const lines = linesOf(script);
    ScriptResult result{0, 0, check(lines)};
    conversation_.noteActivity();  // the lines have just registered; their mailboxes answer a little later
    conversation_.settle();
    auto const start = Conversation::Clock::now();
    for (auto line = lines.begin(); result.passed() && !quit_ && line != lines.end(); ++line) {
        if (auto const played = playLine(line->text)) {
            ++result.steps;
        } else {
            result.failures.push_back({line->number, line->text, played.error().reason});
        }
    }
    result.seconds = secondsSince(start);
    conversation_.settle();
    for (ScriptFailure const& each : result.failures) {
        conversation_.transcript().failure(failureText(name, each));
    }
    return result;
}

std::vector<ScriptPlayer::Line> ScriptPlayer::linesOf(std::istream& script)
{
    std::vector<Line> lines;
    std::string text;
    for (int number = 1; std::getline(script, text); ++number) {
        std::string const line(trimmed(text));
        bool const isForPlayer = !isScriptComment(line) && !(lines.empty() && isScriptOption(line));
        if (isForPlayer) {
            lines.push_back({number, line});
        }
    }
    return lines;
}

std::vector<ScriptFailure> ScriptPlayer::check(std::vector<Line> const& lines)
{
    std::vector<ScriptFailure> mistakes;
    bool isStrict = conversation_.session().options().strict;
    for (Line const& line : lines) {
        if (auto const checked = checkLine(line.text, isStrict); !checked) {
            mistakes.push_back({line.number, line.text, checked.error().reason});
        }
    }
    return mistakes;
}

Outcome<> ScriptPlayer::checkLine(std::string const& line, bool& isStrict)
{
    if (isRequestText(line)) {
        return checkRequestText(line, isStrict);
    }
    return splitWords(line).and_then([&](Words const& words) -> Outcome<> {
        Step const step = findStep(words);
        if (step != nullptr) {
            return (this->*step)(withoutPlaceholders(words)).map([](Action const&) {});
        }
        return checkCommand(words, isStrict);
    });
}

Outcome<> ScriptPlayer::checkRequestText(std::string const& request, bool isStrict) const
{
    bool const isChecked = isStrict && !hasPlaceholder(request);
    return isChecked ? checkRequest(request) : Outcome<>();
}

// A line that is not a step.
Outcome<> ScriptPlayer::checkCommand(Words const& words, bool& isStrict) const
{
    if (Command const* const command = findCommand(words)) {
        return parseArguments(*command, words).map([&](Arguments const& arguments) {
            isStrict = command->name == "strict" ? arguments[0] == "on" : isStrict;
        });
    }
    if (findRequest(words.front()) == nullptr) {
        return unknownWord(words.front());
    }
    return requestText(words).and_then([&](std::string const& request) { return checkRequestText(request, isStrict); });
}

Outcome<> ScriptPlayer::playLine(std::string const& line)
{
    if (auto stopped = checkStop(); !stopped) {
        return stopped;
    }
    conversation_.takeEvents();
    if (isRequestText(line)) {
        return replaced(line).and_then([this](std::string const& request) { return run(request); });
    }
    return splitWords(line)
        .and_then([this](Words const& words) { return replaced(words); })
        .and_then([&](Words const& words) {
            Step const step = findStep(words);
            return step == nullptr ? run(words) : play(step, words, line);
        });
}

Outcome<> ScriptPlayer::play(Step step, Words const& words, std::string const& line)
{
    auto const start = Conversation::Clock::now();
    return (this->*step)(words).and_then([](Action const& action) { return action(); }).map([&] {
        conversation_.transcript().step(line, Conversation::Clock::now() - start);
    });
}

ScriptPlayer::Step ScriptPlayer::findStep(Words const& words)
{
    struct Row
    {
        std::string_view word;
        Step step;
    };
    static constexpr std::array<Row, 6> kSteps{{
        {"expect", &ScriptPlayer::expect},
        {"wait", &ScriptPlayer::wait},
        {"never", &ScriptPlayer::never},
        {"pause", &ScriptPlayer::pause},
        {"try", &ScriptPlayer::attempt},
        {"option", &ScriptPlayer::option},
    }};
    for (Row const& each : kSteps) {
        if (equalIgnoringCase(each.word, words.front())) {
            return each.step;
        }
    }
    return nullptr;
}

Outcome<> ScriptPlayer::run(std::string const& request)
{
    return beforeRequest()
        .and_then([&] { return conversation_.run(request); })
        .map([this](Conversation::Result const& result) { noteResult(result); });
}

Outcome<> ScriptPlayer::run(Words const& words)
{
    return beforeRequest()
        .and_then([&] { return conversation_.run(words); })
        .map([this](Conversation::Result const& result) { noteResult(result); });
}

Outcome<> ScriptPlayer::beforeRequest()
{
    conversation_.settle();
    return checkStop().map([this] {
        conversation_.takeEvents();
        journal_.requestSent();
    });
}

void ScriptPlayer::noteResult(Conversation::Result const& result)
{
    quit_ = result.isOver;
    if (!result.isRequest) {
        return;
    }
    conversation_.noteActivity();
    hasRequest_ = true;
    answer_ = result.answer;
}

Outcome<ScriptPlayer::Action> ScriptPlayer::expect(Words const& words)
{
    if (words.size() > 1 && equalIgnoringCase(words[1], "lamp")) {
        return expectLamp(words);
    }
    if (words.size() > 1 && equalIgnoringCase(words[1], "panel")) {
        return expectPanel(words);
    }
    if (words.size() < 3 || !equalIgnoringCase(words[1], "answer")) {
        return usage(
            "expect answer WORD, expect lamp KEY MODE [within SECONDS], or expect panel FILE [within SECONDS]");
    }
    return [this, expected = joinWords(words, 2)] { return compareAnswer(expected); };
}

Outcome<> ScriptPlayer::compareAnswer(std::string const& expected) const
{
    if (!hasRequest_) {
        return failure("no request was sent before");
    }
    if (!answer_) {
        return failure("the request has no answer");
    }
    return answers(*answer_, expected) ? Outcome<>() : failure("the answer was " + *answer_);
}

Outcome<ScriptPlayer::Action> ScriptPlayer::expectLamp(Words const& words)
{
    return splitTime(words).and_then([this](TimedStep const& step) -> Outcome<Action> {
        if (step.words.size() != 4) {
            return usage("expect lamp KEY off|steady|flashing|fluttering [within SECONDS]");
        }
        auto const mode = findValue(enumerations::kLampMode, step.words[3]);
        if (!mode) {
            return tl::unexpected(mode.error());
        }
        if (!conversation_.controls().lampMode(step.words[2])) {
            return refuse(RefusalKind::kNotFound, "no lamp " + step.words[2]);
        }
        double const seconds = step.seconds.value_or(kUsualSeconds);
        return [this, lamp = step.words[2], name = (*mode)->name, seconds] {
            return waitForLamp(lamp, name, after(seconds));
        };
    });
}

Outcome<> ScriptPlayer::waitForLamp(std::string const& lamp, std::string_view mode,
                                    Conversation::Clock::time_point deadline)
{
    while (true) {
        auto const shown = conversation_.controls().lampMode(lamp);
        if (!shown) {
            return refuse(RefusalKind::kNotFound, "no lamp " + lamp);
        }
        if (*shown == mode) {
            return {};
        }
        if (Conversation::Clock::now() >= deadline) {
            return failure("it is " + *shown);
        }
        if (auto stopped = checkStop(); !stopped) {
            return stopped;
        }
        conversation_.waitForEvents(Conversation::Clock::now() + kLampPoll);
    }
}

Outcome<ScriptPlayer::Action> ScriptPlayer::expectPanel(Words const& words)
{
    return splitTime(words).and_then([this](TimedStep const& step) -> Outcome<Action> {
        if (step.words.size() != 3) {
            return usage("expect panel FILE [within SECONDS]");
        }
        std::string const path = std::filesystem::path(conversation_.session().options().folder) / step.words[2];
        return rowsOfFile(path).map([this, &step](std::vector<std::string> const& rows) -> Action {
            double const seconds = step.seconds.value_or(kUsualSeconds);
            return [this, rows, seconds] { return waitForPanel(rows, after(seconds)); };
        });
    });
}

Outcome<> ScriptPlayer::waitForPanel(std::vector<std::string> const& rows, Conversation::Clock::time_point deadline)
{
    while (true) {
        TelephoneState const state = conversation_.controls().state();
        std::string const difference = firstDifference(panelRows(state, {.ownDomain = state.domain}), rows);
        if (difference.empty()) {
            return {};
        }
        if (Conversation::Clock::now() >= deadline) {
            return failure(difference);
        }
        if (auto stopped = checkStop(); !stopped) {
            return stopped;
        }
        conversation_.waitForEvents(Conversation::Clock::now() + kLampPoll);
    }
}

Outcome<ScriptPlayer::Action> ScriptPlayer::wait(Words const& words)
{
    return splitTime(words).and_then([this](TimedStep const& step) {
        double const seconds = step.seconds.value_or(kUsualSeconds);
        return EventPattern::parse(step.words, 1).map([this, seconds](EventPattern const& pattern) -> Action {
            return [this, seconds, pattern] { return waitForEvent(pattern, after(seconds)); };
        });
    });
}

Outcome<> ScriptPlayer::waitForEvent(EventPattern const& pattern, Conversation::Clock::time_point deadline)
{
    conversation_.takeEvents();
    std::string const* event = journal_.take(pattern);
    while (event == nullptr) {
        bool const came = conversation_.waitForEvents(deadline);
        event = journal_.take(pattern);
        if (auto stopped = checkStop(); !stopped) {
            return stopped;
        }
        if (event == nullptr && !came) {
            return failure("it did not come" + cameInstead());
        }
    }
    remember(*event, pattern.method());
    return {};
}

Outcome<ScriptPlayer::Action> ScriptPlayer::never(Words const& words)
{
    return splitTime(words).and_then([this](TimedStep const& step) -> Outcome<Action> {
        if (!step.seconds) {
            return usage("never EVENT within SECONDS");
        }
        double const seconds = *step.seconds;
        return EventPattern::parse(step.words, 1).map([this, seconds](EventPattern const& pattern) -> Action {
            return [this, seconds, pattern] { return waitForNone(pattern, after(seconds)); };
        });
    });
}

Outcome<> ScriptPlayer::waitForNone(EventPattern const& pattern, Conversation::Clock::time_point deadline)
{
    for (bool mayCome = true; mayCome;) {
        if (auto stopped = checkStop(); !stopped) {
            return stopped;
        }
        mayCome = journal_.find(pattern) == nullptr && conversation_.waitForEvents(deadline);
    }
    auto const* const event = journal_.find(pattern);
    return event == nullptr
               ? Outcome<>()
               : failure("it came: " + eventInWords(*event, {.ownDomain = conversation_.controls().state().domain}));
}

Outcome<ScriptPlayer::Action> ScriptPlayer::pause(Words const& words)
{
    bool const isDuration = words.size() == 2 || (words.size() == 3 && isSecondsUnit(words[2]));
    if (!isDuration) {
        return usage("pause SECONDS");
    }
    return secondsOf(words[1]).map(
        [this](double seconds) -> Action { return [this, seconds] { return rest(after(seconds)); }; });
}

// Those at their place are not steps.
Outcome<ScriptPlayer::Action> ScriptPlayer::option(Words const&)
{
    return refuse(RefusalKind::kBadInput, "options stand before the first step");
}

// What is tried is not checked before the first step: it may be wrong.
Outcome<ScriptPlayer::Action> ScriptPlayer::attempt(Words const& words)
{
    if (words.size() == 1) {
        return usage("try REQUEST or COMMAND");
    }
    return [this, line = Words(words.begin() + 1, words.end())] {
        if (auto const tried = run(line); !tried) {
            conversation_.transcript().note("refused: " + tried.error().reason);
        }
        return checkStop();
    };
}

Outcome<> ScriptPlayer::rest(Conversation::Clock::time_point deadline)
{
    auto stopped = checkStop();
    while (stopped && (conversation_.waitForEvents(deadline) || Conversation::Clock::now() < deadline)) {
        stopped = checkStop();
    }
    return stopped;
}

void ScriptPlayer::remember(std::string const& event, std::string_view method)
{
    for (EventElement const& each : findEventDescription(method)->elements) {
        if (auto value = elementValue(event, each.tag)) {
            values_[std::string(each.tag)] = std::move(*value);
        }
    }
}

std::optional<std::string> ScriptPlayer::rememberedValue(std::string_view tag) const
{
    for (auto const& [name, value] : values_) {
        if (equalIgnoringCase(name, tag)) {
            return value;
        }
    }
    return equalIgnoringCase(tag, "Line") ? rememberedValue("LineID") : std::nullopt;
}

Outcome<std::string> ScriptPlayer::replaced(std::string text) const
{
    return replacePlaceholders(std::move(text), [this](std::string_view tag) { return rememberedValue(tag); });
}

Outcome<Words> ScriptPlayer::replaced(Words words) const
{
    for (std::string& word : words) {
        auto text = replaced(std::move(word));
        if (!text) {
            return tl::unexpected(std::move(text.error()));
        }
        word = *std::move(text);
    }
    return words;
}

std::string ScriptPlayer::cameInstead() const
{
    auto const events = journal_.untaken();
    if (events.empty()) {
        return "; nothing else came";
    }
    DisplayOptions const options{.ownDomain = conversation_.controls().state().domain};
    std::string text;
    for (std::size_t i = events.size() - std::min(events.size(), kMostShown); i < events.size(); ++i) {
        text += (text.empty() ? "; came instead: " : "; ") + eventInWords(events[i], options);
    }
    return text;
}

Outcome<> ScriptPlayer::checkStop() const
{
    return conversation_.isStopped() ? failure("ended by a signal") : Outcome<>();
}

}  // namespace telephone
