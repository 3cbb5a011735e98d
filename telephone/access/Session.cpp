#include "telephone/access/Session.h"

#include <utility>

#include <spdlog/fmt/fmt.h>

#include "telephone/access/Commands.h"
#include "telephone/access/RequestReasons.h"
#include "telephone/access/RequestShorthand.h"
#include "telephone/access/TelephoneControls.h"
#include "telephone/base/Names.h"
#include "telephone/base/Version.h"
#include "telephone/display/SafeText.h"
#include "telephone/framework/Channel.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/TelephoneContext.h"
#include "telephone/protocol/MessageText.h"
#include "telephone/protocol/ProtocolCheck.h"
#include "telephone/protocol/ProtocolDescription.h"
#include "telephone/time/VirtualTime.h"
#include "telephone/time/Waiting.h"
#include "telephone/trace/Trace.h"

namespace telephone {

namespace {

constexpr char const* kSessionComponent = "applications";
constexpr std::size_t kEventsAtOnce = 256;
constexpr std::size_t kLongestName = 40;
constexpr std::size_t kLongestLogged = 60;  // bytes of an unknown request's name

void traceReason(std::string_view reason)
{
    traceStep("reason", [reason](TraceStep& step) { step.add("text", reason); });
}

void sendError(MessageSink const& sink, Refusal const& refusal)
{
    traceReason(refusal.reason);
    sink({MessageKind::kError, refusal.reason});
}

// A command without what may be secret: the value of a setting.
std::string textForTrace(Command const& command, Words words)
{
    if (command.name == "store set" && words.size() > wordsInName(command) + 1) {
        words.resize(wordsInName(command) + 1);
        words.emplace_back("***");
    }
    return quoteWords(words);
}

}  // namespace

SessionFactory sessionsOf(SessionServices services)
{
    return [services = std::move(services)](std::string name, std::size_t queuedEvents, std::function<void()> wake) {
        return std::make_unique<Session>(std::move(name), services, queuedEvents, std::move(wake));
    };
}

Session::Session(std::string name, SessionServices services, std::size_t queuedEvents, std::function<void()> wake)
    : services_(std::move(services))
    , wake_(std::move(wake))
    , label_(std::move(name))
    , channel_(services_.context.openChannel(label_, queuedEvents, [this] { this->wake(); }))
{}

Session::~Session()
{
    unfollow();
    services_.context.closeChannel(channel_);
}

void Session::wake()
{
    if (!woken_.exchange(true)) {
        wake_();
    }
}

void Session::handle(std::string_view text, MessageSink const& sink)
{
    if (isRequestText(text)) {
        return handleRequest(text, sink);
    }
    auto const words = splitWords(text);
    if (words) {
        return handle(*words, sink);
    }
    auto const fail = [&words](MessageSink const& to) { sendError(to, words.error()); };
    isRecorded() ? runRecorded(InputKind::kCommand, text, sink, fail) : fail(sink);
}

void Session::handle(Words const& words, MessageSink const& sink)
{
    bool const isRequest = !words.empty() && findCommand(words) == nullptr && findRequest(words.front()) != nullptr;
    if (auto const request = isRequest ? requestText(words) : tl::unexpected(Refusal{})) {
        return handleRequest(*request, sink);
    }
    auto const run = [this, &words](MessageSink const& to) { runWords(words, to); };
    isRecorded() ? runRecorded(InputKind::kCommand, quoteWords(words), sink, run) : run(sink);
}

bool Session::isRecorded() const
{
    return services_.recorder != nullptr && services_.recorder->isOn();
}

void Session::runRecorded(InputKind kind, std::string_view text, MessageSink const& sink, Work const& work)
{
    TrafficRecorder& recorder = *services_.recorder;
    recorder.input({channel_->name(), kind, text, options_.strict, options_.reasons});
    work([&](Message const& message) {
        recorder.reply(channel_->name(), message);
        sink(message);
    });
}

void Session::runWords(Words const& words, MessageSink const& sink)
{
    Driving const driving;  // time moves if a request or command has to wait for it
    if (words.empty()) {
        return sendError(sink, {RefusalKind::kBadInput, "the message is empty"});
    }
    if (Command const* const command = findCommand(words)) {
        TraceScope const scope(traceStep("command", [&](TraceStep& step) {
            step.add("application", label_).add("text", textForTrace(*command, words));
        }));
        auto const result = runCommand(*this, *command, words);
        while (sendsEventsFirst_) {
            sendsEventsFirst_ = takeEvents(kEventsAtOnce, sink);
        }
        return result ? sink({MessageKind::kResult, *result}) : sendError(sink, result.error());
    }
    bool const isRequest = findRequest(words.front()) != nullptr;
    sendError(sink, isRequest ? requestText(words).error() : unknownWord(words.front()).value());
}

void Session::handleRequest(std::string_view text, MessageSink const& sink)
{
    auto const run = [this, text](MessageSink const& to) { runRequest(text, to); };
    isRecorded() ? runRecorded(InputKind::kRequest, text, sink, run) : run(sink);
}

void Session::runRequest(std::string_view text, MessageSink const& sink)
{
    Driving const driving;
    TraceScope const scope(
        traceStep("request", [&](TraceStep& step) { step.add("application", label_).add("text", text); }));
    if (auto const checked = options_.strict ? checkRequest(text) : Outcome<>(); !checked) {
        return sendError(sink, checked.error());
    }
    sink({MessageKind::kRequest, text});
    auto const began = SteadyClock::now();
    RequestRunner::Reply const reply = services_.requests.run(*channel_, text);
    traceStep("answer", [&](TraceStep& step) {
        step.addUnlessEmpty("text", reply.answer.value_or("")).addMicroseconds(SteadyClock::now() - began);
    });
    if (reply.answer) {
        sink({MessageKind::kAnswer, *reply.answer});
    }
    if (reply.answer == "sfiFailure") {
        noteUnknown(text);
    }
    if (options_.reasons || isTracing()) {
        sendReasons(
            text, reply, options_.reasons ? sink : [](Message const&) {});
    }
    if (reply.finished) {
        sink({MessageKind::kFinished, {}});
    }
}

void Session::sendReasons(std::string_view request, RequestRunner::Reply const& reply, MessageSink const& sink) const
{
    std::optional<TelephoneState> state;
    auto const readOnce = [this, &state]() -> TelephoneState const& {
        if (!state) {
            state = services_.telephone.state();
        }
        return *state;
    };
    for (std::string const& reason : reasonsOf(request, reply, readOnce)) {
        traceReason(reason);
        sink({MessageKind::kReason, reason});
    }
}

void Session::noteUnknown(std::string_view request) const
{
    auto const method = takeElement(request);
    if (method && method->name == "Method" && findRequestDescription(method->value) == nullptr) {
        std::string_view const name = method->value.substr(0, kLongestLogged);
        log(kLogWarning, kSessionComponent, "{} sent an unknown request: {}{}", label_, safeText(name),
            suggestion(name, requestNames()));
    }
}

bool Session::takeEvents(std::size_t most, MessageSink const& sink)
{
    woken_ = false;
    if (usesHistory_) {
        channel_->take(most);
        auto const state = [this] {
            TelephoneState const now = services_.telephone.state();
            return EventSubscription::State{now.event, stateJson(now)};
        };
        return subscription_ && subscription_->take(most, state, sink);
    }
    auto const events = channel_->take(most);
    for (NumberedEvent const& event : events) {
        sink({MessageKind::kEvent, event.text, event.number});
    }
    return !events.empty();
}

std::uint64_t Session::dropped() const
{
    return usesHistory_ ? 0 : channel_->dropped();
}

int Session::readingRate() const
{
    return services_.readingRate == nullptr ? 0 : services_.readingRate->load();
}

RequestRunner::Reply Session::run(std::string const& request)
{
    return services_.requests.run(*channel_, request);
}

Outcome<std::string> Session::hello(std::optional<std::string> const& name)
{
    if (name && name->size() > kLongestName) {
        return refuse(RefusalKind::kBadInput, fmt::format("a name has at most {} bytes", kLongestName));
    }
    label_ = name ? safeText(*name) : label_;  // it stands in lines of the log
    TelephoneState const state = services_.telephone.state();
    return fmt::format(R"({{"telephone":"{}","version":"{}","protocol":{},"start":"{}","ready":{},"domain":"{}"}})",
                       kTelephoneName, kTelephoneVersion, kProtocolVersion, state.start, state.ready, state.domain);
}

void Session::follow(EventSelection selection)
{
    unfollow();
    usesHistory_ = true;
    subscription_.emplace(services_.history, std::move(selection));
    listener_ = services_.history.listen([this] { wake(); });
    wake();
}

Outcome<> Session::advance(SteadyClock::duration duration)
{
    return telephone::advance(duration).map([this] { sendsEventsFirst_ = true; });
}

Outcome<> Session::check()
{
    awaitRest();
    return services_.telephone.missingSettings().and_then([this](TelephoneControls::Rows const& missing) -> Outcome<> {
        auto const broken = invariants_.broken(services_.history, services_.telephone.state(), missing);
        return broken.empty() ? Outcome<>()
                              : refuse(RefusalKind::kWrongState, fmt::format("{}", fmt::join(broken, "; ")));
    });
}

void Session::unfollow()
{
    if (subscription_) {
        services_.history.endListening(listener_);
        subscription_.reset();
    }
}

}  // namespace telephone
