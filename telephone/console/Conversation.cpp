#include "telephone/console/Conversation.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "telephone/access/TelephoneControls.h"
#include "telephone/console/Transcript.h"
#include "telephone/display/LampWords.h"
#include "telephone/time/Waiting.h"

namespace telephone {

namespace {

using namespace std::chrono_literals;

constexpr std::size_t kQueuedEvents = 100000;
constexpr std::size_t kEventsAtOnce = 256;
constexpr auto kQuiet = 100ms;
constexpr auto kLongestUnrest = 1000ms;

}  // namespace

Conversation::Conversation(std::string const& name, SessionServices services, Transcript& transcript, int stop)
    : transcript_(transcript)
    , stop_(stop)
    , session_(name, withEnd(std::move(services)), kQueuedEvents, [this] { wakeUp_.signal(); })
{
    session_.options() = {.strict = true, .reasons = true};
    writeAs(transcript.kind());
    session_.follow({session_.services().history.latest(), {}, {}});
}

Conversation::~Conversation()
{
    controls().watchLamps(nullptr);
}

SessionServices Conversation::withEnd(SessionServices services)
{
    services.end = [this] { quit_ = true; };
    return services;
}

void Conversation::writeAs(OutputKind kind)
{
    bool const hasChoice = kind == OutputKind::kWords || kind == OutputKind::kTags;
    session_.options().raw = hasChoice ? std::optional(kind == OutputKind::kTags) : std::nullopt;
    transcript_.setKind(kind);
}

Outcome<Conversation::Result> Conversation::run(std::string const& line)
{
    std::string const text(trimmed(line));
    if (text.empty() || text.front() == '#') {
        return Result{};
    }
    return run([&](MessageSink const& sink) { session_.handle(text, sink); });
}

Outcome<Conversation::Result> Conversation::run(Words const& words)
{
    return run([&](MessageSink const& sink) { session_.handle(words, sink); });
}

Outcome<Conversation::Result> Conversation::run(std::function<void(MessageSink const&)> const& handle)
{
    Outcome<Result> result = Result{};
    OutputForm::Reply reply;
    handle([&](Message const& message) {
        tellObserver(message);
        show(message, reply, result);
    });
    if (result && result->isRequest) {
        if (!reply.answer) {
            noteEnd(reply);
        }
        result->answer = reply.answer;
        transcript_.reply(reply);
    }
    if (result) {
        result->isOver = quit_;
    }
    if (auto const raw = session_.options().raw) {
        transcript_.setKind(*raw ? OutputKind::kTags : OutputKind::kWords);
    }
    return result;
}

void Conversation::show(Message const& message, OutputForm::Reply& reply, Outcome<Result>& result)
{
    switch (message.kind) {
    case MessageKind::kRequest:
        transcript_.write(message);
        result->isRequest = true;
        reply.request = message.text;
        sent_ = Clock::now();
        break;
    case MessageKind::kAnswer:
        reply.answer = message.text;
        noteEnd(reply);
        break;
    case MessageKind::kError:
        result = refuse(RefusalKind::kBadInput, std::string(message.text));
        break;
    case MessageKind::kReason:
        reply.reasons.emplace_back(message.text);
        break;
    case MessageKind::kResult:
        transcript_.write(message);
        break;
    case MessageKind::kEvent:
    case MessageKind::kGap:
    case MessageKind::kState:
        showEvent(message);
        break;
    case MessageKind::kFinished:
        break;
    }
}

void Conversation::noteEnd(OutputForm::Reply& reply) const
{
    reply.took = Clock::now() - sent_;
    reply.time = wallTime();
}

void Conversation::tellObserver(Message const& message) const
{
    if (observer_) {
        observer_(message);
    }
}

void Conversation::showEvent(Message const& message)
{
    tellObserver(message);
    transcript_.write(message);
    if (listener_ && message.kind == MessageKind::kEvent) {
        listener_(std::string(message.text));
    }
}

void Conversation::showLamps()
{
    for (KeyState const& key : controls().state().keys) {
        lamps_[lampName(key)] = key.lamp;
    }
    controls().watchLamps([this] {
        lampsChanged_ = true;
        wakeUp_.signal();
    });
}

void Conversation::writeLamps()
{
    TelephoneState const state = controls().state();
    for (KeyState const& key : state.keys) {
        LampState const before = std::exchange(lamps_[lampName(key)], key.lamp);
        if (before.mode != key.lamp.mode || before.colour != key.lamp.colour) {
            transcript_.lamp(key, state);
        }
    }
}

bool Conversation::takeEvents()
{
    wakeUp_.clear();
    bool some = false;
    while (session_.takeEvents(kEventsAtOnce, [this](Message const& message) { showEvent(message); })) {
        some = true;
        lastActivity_ = Clock::now();
    }
    if (lampsChanged_.exchange(false)) {
        writeLamps();
    }
    return some;
}

bool Conversation::waitForEvents(Clock::time_point deadline)
{
    while (!takeEvents()) {
        if (Clock::now() >= deadline || isStopped()) {
            return false;
        }
        std::array<pollfd, 2> waited{{{wakeUp_.descriptor(), POLLIN, 0}, {stop_, POLLIN, 0}}};
        pollUntil(waited, deadline, "events");
    }
    return true;
}

void Conversation::settle()
{
    auto const end = Clock::now() + kLongestUnrest;
    while (waitForEvents(std::min(end, lastActivity_ + kQuiet))) {
    }
}

bool Conversation::isStopped() const
{
    return isReadable(stop_);
}

}  // namespace telephone
