#include "telephone/console/ScriptPlayer.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <thread>

#include "telephone/base/Names.h"
#include "telephone/console/CommandError.h"
#include "telephone/console/RequestText.h"
#include "telephone/console/ScriptFailure.h"
#include "telephone/console/TelephoneControls.h"
#include "telephone/console/Transcript.h"

namespace telephone {

namespace {

using namespace std::chrono_literals;

constexpr double kUsualSeconds = 10;
constexpr auto kLampPoll = 10ms;
constexpr std::size_t kMostShown = 20;
constexpr std::array<std::string_view, 4> kLampModes{"off", "steady", "flashing", "fluttering"};

bool isSecondsUnit(std::string const& word)
{
    return word == "s" || word == "second" || word == "seconds";
}

// Takes "within SECONDS" off the end of a step.
std::optional<double> takeWithin(Words& words)
{
    auto const found = std::find_if(words.begin(), words.end(),
                                    [](std::string const& word) { return equalIgnoringCase(word, "within"); });
    if (found == words.end()) {
        return std::nullopt;
    }
    Words const rest(found + 1, words.end());
    if (rest.empty() || rest.size() > 2 || (rest.size() == 2 && !isSecondsUnit(rest[1]))) {
        throw CommandError("write it as: within SECONDS, at the end of the line");
    }
    words.erase(found, words.end());
    return secondsOf(rest[0]);
}

// The answer as a whole, or what it begins with: up to a comma or the first element.
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
        try {
            playLine(line);
        } catch (std::runtime_error const& failure) {
            conversation_.takeEvents();
            conversation_.transcript().error(name + ":" + std::to_string(number) + ": " + std::string(trimmed(line)) +
                                             ": " + failure.what());
            return false;
        }
    }
    conversation_.takeEvents();
    return true;
}

void ScriptPlayer::playLine(std::string const& line)
{
    checkStop();
    conversation_.takeEvents();
    std::string_view const text = trimmed(line);
    if (isRequestText(text)) {
        return send(replaced(std::string(text)));
    }
    Words words = splitWords(text);
    if (words.empty()) {
        return;
    }
    for (std::string& word : words) {
        word = replaced(std::move(word));
    }
    if (Step const step = findStep(words)) {
        return (this->*step)(words);
    }
    run(words);
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

void ScriptPlayer::send(std::string const& request)
{
    beforeRequest();
    afterRequest(conversation_.interpreter().send(request));
}

void ScriptPlayer::run(Words const& words)
{
    beforeRequest();
    afterRequest(conversation_.interpreter().run(words));
}

void ScriptPlayer::beforeRequest()
{
    conversation_.settle();
    checkStop();
    conversation_.takeEvents();
    journal_.requestSent();
}

void ScriptPlayer::afterRequest(CommandInterpreter::Result const& result)
{
    quit_ = result.kind == CommandInterpreter::Kind::kQuit;
    if (result.kind != CommandInterpreter::Kind::kRequest) {
        return;
    }
    conversation_.noteRequest();
    hasRequest_ = true;
    answer_ = result.answer;
}

void ScriptPlayer::expect(Words const& words)
{
    if (words.size() > 1 && equalIgnoringCase(words[1], "lamp")) {
        return expectLamp(words);
    }
    if (words.size() < 3 || !equalIgnoringCase(words[1], "answer")) {
        throw CommandError("write it as: expect answer WORD, or expect lamp KEY MODE [within SECONDS]");
    }
    expectAnswer(words);
}

void ScriptPlayer::expectAnswer(Words const& words)
{
    if (!hasRequest_) {
        throw ScriptFailure("no request was sent before");
    }
    std::string const expected = joinWords(words, 2);
    if (!answer_) {
        throw ScriptFailure("the request has no answer");
    }
    if (!answers(*answer_, expected)) {
        throw ScriptFailure("the answer was " + *answer_);
    }
}

void ScriptPlayer::expectLamp(Words const& words)
{
    Words step = words;
    double const seconds = takeWithin(step).value_or(kUsualSeconds);
    if (step.size() != 4 || std::find(kLampModes.begin(), kLampModes.end(), step[3]) == kLampModes.end()) {
        throw CommandError("write it as: expect lamp KEY off|steady|flashing|fluttering [within SECONDS]");
    }
    auto const deadline = Conversation::Clock::now() + Seconds(seconds);
    while (true) {
        auto const mode = conversation_.controls().lampMode(step[2]);
        if (!mode) {
            throw CommandError("no lamp " + step[2]);
        }
        if (*mode == step[3]) {
            break;
        }
        if (Conversation::Clock::now() >= deadline) {
            throw ScriptFailure("it is " + *mode);
        }
        checkStop();
        conversation_.waitForEvents(Conversation::Clock::now() + kLampPoll);
    }
}

void ScriptPlayer::wait(Words const& words)
{
    Words step = words;
    double const seconds = takeWithin(step).value_or(kUsualSeconds);
    EventPattern const pattern(step, 1);
    auto const deadline =
        Conversation::Clock::now() + std::chrono::duration_cast<Conversation::Clock::duration>(Seconds(seconds));
    conversation_.takeEvents();
    std::string const* event = journal_.take(pattern);
    while (event == nullptr) {
        bool const came = conversation_.waitForEvents(deadline);
        event = journal_.take(pattern);
        checkStop();
        if (event == nullptr && !came) {
            throw ScriptFailure("it did not come" + cameInstead());
        }
    }
    remember(*event, pattern.method());
}

void ScriptPlayer::never(Words const& words)
{
    Words step = words;
    auto const seconds = takeWithin(step);
    if (!seconds) {
        throw CommandError("write it as: never EVENT within SECONDS");
    }
    EventPattern const pattern(step, 1);
    auto const deadline =
        Conversation::Clock::now() + std::chrono::duration_cast<Conversation::Clock::duration>(Seconds(*seconds));
    do {
        checkStop();
        if (auto const* const event = journal_.find(pattern)) {
            throw ScriptFailure("it came: " + *event);
        }
    } while (conversation_.waitForEvents(deadline));
    if (auto const* const event = journal_.find(pattern)) {
        throw ScriptFailure("it came: " + *event);
    }
}

void ScriptPlayer::pause(Words const& words)
{
    bool const isDuration = words.size() == 2 || (words.size() == 3 && isSecondsUnit(words[2]));
    if (!isDuration) {
        throw CommandError("write it as: pause SECONDS");
    }
    auto const deadline = Conversation::Clock::now() +
                          std::chrono::duration_cast<Conversation::Clock::duration>(Seconds(secondsOf(words[1])));
    while (conversation_.waitForEvents(deadline) || Conversation::Clock::now() < deadline) {
        checkStop();
    }
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
    if (!equalIgnoringCase(tag, "Line")) {
        return std::nullopt;
    }
    auto const line = values_.find("LineID");
    return line == values_.end() ? std::nullopt : std::optional(line->second);
}

std::string ScriptPlayer::replaced(std::string text) const
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
            throw CommandError("no wait before took an event with an element " + tag);
        }
        text.replace(start, end - start + 1, value ? *value : text.substr(start, end - start + 1));
        start += value ? value->size() : 1;
    }
    return text;
}

std::string ScriptPlayer::cameInstead() const
{
    auto const events = journal_.untaken();
    if (events.empty()) {
        return "; nothing else came";
    }
    std::string text = "; came instead:";
    std::size_t const first = events.size() > kMostShown ? events.size() - kMostShown : 0;
    for (std::size_t i = first; i < events.size(); ++i) {
        text += " " + events[i];
    }
    return text;
}

void ScriptPlayer::checkStop() const
{
    if (conversation_.isStopped()) {
        throw ScriptFailure("ended by a signal");
    }
}

}  // namespace telephone
