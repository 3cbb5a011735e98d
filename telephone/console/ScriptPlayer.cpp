#include "telephone/console/ScriptPlayer.h"

#include <algorithm>
#include <array>
#include <cctype>

#include <spdlog/fmt/fmt.h>

#include "telephone/access/RequestShorthand.h"
#include "telephone/access/TelephoneControls.h"
#include "telephone/base/Names.h"
#include "telephone/console/Transcript.h"
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

// Compares the whole answer, or its beginning up to a comma or the first element.
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

bool ScriptPlayer::play(std::istream& script, std::string const& name)
{
    std::string line;
    for (int number = 1; !quit_ && std::getline(script, line); ++number) {
        if (auto const played = playLine(line); !played) {
            conversation_.takeEvents();
            conversation_.transcript().error(
                fmt::format("{}:{}: {}: {}", name, number, trimmed(line), played.error().reason));
            return false;
        }
    }
    conversation_.takeEvents();
    return true;
}

Outcome<> ScriptPlayer::playLine(std::string const& line)
{
    if (auto stopped = checkStop(); !stopped) {
        return stopped;
    }
    conversation_.takeEvents();
    std::string_view const text = trimmed(line);
    if (isRequestText(text)) {
        return replaced(std::string(text)).and_then([this](std::string const& request) { return run(request); });
    }
    return splitWords(text)
        .and_then([this](Words const& words) { return replaced(words); })
        .and_then([this](Words const& words) {
            if (words.empty()) {
                return Outcome<>();
            }
            Step const step = findStep(words);
            return step == nullptr ? run(words) : (this->*step)(words);
        });
}

ScriptPlayer::Step ScriptPlayer::findStep(Words const& words)
{
    struct Row
    {
        std::string_view word;
        Step step;
    };
    static constexpr std::array<Row, 4> kSteps{{
        {"expect", &ScriptPlayer::expect},
        {"wait", &ScriptPlayer::wait},
        {"never", &ScriptPlayer::never},
        {"pause", &ScriptPlayer::pause},
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
    conversation_.noteRequest();
    hasRequest_ = true;
    answer_ = result.answer;
}

Outcome<> ScriptPlayer::expect(Words const& words)
{
    if (words.size() > 1 && equalIgnoringCase(words[1], "lamp")) {
        return expectLamp(words);
    }
    if (words.size() < 3 || !equalIgnoringCase(words[1], "answer")) {
        return usage("expect answer WORD, or expect lamp KEY MODE [within SECONDS]");
    }
    return expectAnswer(words);
}

Outcome<> ScriptPlayer::expectAnswer(Words const& words)
{
    if (!hasRequest_) {
        return failure("no request was sent before");
    }
    if (!answer_) {
        return failure("the request has no answer");
    }
    if (!answers(*answer_, joinWords(words, 2))) {
        return failure("the answer was " + *answer_);
    }
    return {};
}

Outcome<> ScriptPlayer::expectLamp(Words const& words)
{
    return splitTime(words).and_then([this](TimedStep const& step) -> Outcome<> {
        if (step.words.size() != 4) {
            return usage("expect lamp KEY off|steady|flashing|fluttering [within SECONDS]");
        }
        return findValue(enumerations::kLampMode, step.words[3]).and_then([&](EnumerationValue const* mode) {
            return waitForLamp(step.words[2], mode->name, after(step.seconds.value_or(kUsualSeconds)));
        });
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

Outcome<> ScriptPlayer::wait(Words const& words)
{
    return splitTime(words).and_then([this](TimedStep const& step) {
        return EventPattern::parse(step.words, 1).and_then([&](EventPattern const& pattern) {
            return waitForEvent(pattern, after(step.seconds.value_or(kUsualSeconds)));
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

Outcome<> ScriptPlayer::never(Words const& words)
{
    return splitTime(words).and_then([this](TimedStep const& step) -> Outcome<> {
        if (!step.seconds) {
            return usage("never EVENT within SECONDS");
        }
        return EventPattern::parse(step.words, 1).and_then([&](EventPattern const& pattern) {
            return waitForNone(pattern, after(*step.seconds));
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
    return event == nullptr ? Outcome<>() : failure("it came: " + *event);
}

Outcome<> ScriptPlayer::pause(Words const& words)
{
    bool const isDuration = words.size() == 2 || (words.size() == 3 && isSecondsUnit(words[2]));
    if (!isDuration) {
        return usage("pause SECONDS");
    }
    return secondsOf(words[1]).and_then([this](double seconds) {
        auto const deadline = after(seconds);
        auto stopped = checkStop();
        while (stopped && (conversation_.waitForEvents(deadline) || Conversation::Clock::now() < deadline)) {
            stopped = checkStop();
        }
        return stopped;
    });
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
    std::size_t start = 0;
    while ((start = text.find('{', start)) != std::string::npos) {
        auto const end = text.find('}', start);
        if (end == std::string::npos) {
            return text;
        }
        std::string const tag = text.substr(start + 1, end - start - 1);
        bool const isTag = !tag.empty() && std::all_of(tag.begin(), tag.end(), [](unsigned char letter) {
            return std::isalnum(letter) != 0 || letter == '_';
        });
        auto const value = isTag ? rememberedValue(tag) : std::nullopt;
        if (isTag && !value) {
            return refuse(RefusalKind::kWrongState, "no earlier wait took an event with an element " + tag);
        }
        text.replace(start, end - start + 1, value ? *value : text.substr(start, end - start + 1));
        start += value ? value->size() : 1;
    }
    return text;
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
    auto const shown = static_cast<std::ptrdiff_t>(std::min(events.size(), kMostShown));
    return fmt::format("; came instead: {}", fmt::join(events.end() - shown, events.end(), " "));
}

Outcome<> ScriptPlayer::checkStop() const
{
    return conversation_.isStopped() ? failure("ended by a signal") : Outcome<>();
}

}  // namespace telephone
