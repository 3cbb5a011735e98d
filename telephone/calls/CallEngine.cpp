#include "telephone/calls/CallEngine.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "CommunicationsServiceEnumerations.h"
#include "CommunicationsServiceEventIfc.h"
#include "telephone/calls/LogComponent.h"
#include "telephone/framework/Log.h"
#include "telephone/trace/Trace.h"

namespace telephone {

namespace {

// before: null for a new call.
void describe(TraceStep& step, Call const& call, CallSnapshot const* before)
{
    CallSnapshot const& now = call.snapshot();
    step.add("call", now.callID).add("line", now.line.lineURI);
    step.add("state", enumerations::kCallState.find(now.state)->name);
    if (before != nullptr) {
        step.add("before", enumerations::kCallState.find(before->state)->name);
    }
    step.add("party", now.remoteURI);
    step.addUnlessEmpty("dialog", call.session() == nullptr ? std::string() : call.session()->dialogId().callId);
}

}  // namespace

CallEngine::CallEngine(sip::EventLoop& loop, EngineConfiguration configuration, LineDirectory& lines,
                       CallPolicy& policy, EventPoster post)
    : loop_(loop)
    , configuration_(std::move(configuration))
    , lines_(lines)
    , post_(std::move(post))
    , agent_(loop, configuration_.agent, *this)
    , surroundings_{loop, *this, post_, configuration_.reinviteTimeout}
    , list_(surroundings_, configuration_, observers_)
    , established_(loop, list_, lines)
    , callBacks_(agent_, configuration_, lines, availability_, list_, post_)
    , outgoing_(agent_, configuration_, lines, availability_, list_, established_, callBacks_)
    , incoming_(loop, configuration_, lines, policy, availability_, post_, list_, established_)
    , joined_(agent_, lines, post_, list_, established_, incoming_)
    , pickups_(agent_, configuration_, list_, outgoing_)
    , messages_(agent_, configuration_, lines, post_, observers_)
    , registrations_(agent_, post_,
                     [this](LineAccount const& line, bool registered) { registrationChanged(line, registered); })
    , publisher_(loop, list_)
    , server_(agent_, lines, availability_, post_)
{}

// The subjects are empty then. The agent is destroyed last and without the lock, because it waits for the answers to
// its last requests.
CallEngine::~CallEngine()
{
    deactivate();
}

// --- life

void CallEngine::activate()
{
    std::lock_guard const guard(loop_);
    availability_.active = true;
    registrations_.begin(lines_.accounts());
}

void CallEngine::deactivate()
{
    std::lock_guard const guard(loop_);
    availability_.active = false;
    list_.endAll();
    pickups_.clear();
    callBacks_.clear();
    messages_.clear();
    publisher_.clear();
    registrations_.end();
}

void CallEngine::setServiceState(sfiServiceState state)
{
    std::lock_guard const guard(loop_);
    availability_.serviceState = state;
    if (state == sfiServiceOutOfService) {
        registrations_.end();
    } else if (availability_.active) {
        registrations_.begin(lines_.accounts());
    }
}

void CallEngine::addObserver(CallObserver& observer)
{
    std::lock_guard const guard(loop_);
    observers_.add(observer);
}

void CallEngine::removeObserver(CallObserver& observer)
{
    std::lock_guard const guard(loop_);
    observers_.remove(observer);
}

std::optional<sip::Account> CallEngine::accountOfLine(int lineNumber) const
{
    std::lock_guard const guard(loop_);
    auto line = lines_.accountOfLine(lineNumber);
    return line ? std::optional(std::move(line->account)) : std::nullopt;
}

// --- PhoneCalls

Outcome<> CallEngine::make(LineAddress const& place, int callID, std::string const& destination, CallPurpose purpose)
{
    return outgoing_.make(place.recordLine, place.appearance, callID, destination, purpose);
}

Outcome<> CallEngine::hold(int callID)
{
    std::lock_guard const guard(loop_);
    established_.setHeldByHand(callID, true);
    return established_.hold(callID);
}

Outcome<> CallEngine::pickup(LineAddress const& place, int callID, std::string const& number)
{
    return pickups_.directed(place.recordLine, place.appearance, callID, number);
}

Outcome<> CallEngine::takeOver(LineAddress const& place, int callID, PickupTarget const& target)
{
    return pickups_.takeOver(place.recordLine, place.appearance, callID, target);
}

void CallEngine::featureFailed(int recordLine, sfiFeature feature, sfiFeatureFailure failure)
{
    std::lock_guard const guard(loop_);
    std::vector<Call*> candidates = list_.speaking();
    for (auto const& call : list_.all()) {
        candidates.push_back(call.get());
    }
    auto const call = std::ranges::find_if(candidates, [recordLine](Call const* each) {
        return recordLine == 0 || each->line().recordLine == recordLine || each->line().lineNumber == recordLine;
    });
    if (call != candidates.end()) {
        (*call)->postFeatureFailed(feature, failure);
        return;
    }
    auto const line = lines_.addressOf(recordLine, 0);
    post_([lineURI = line ? line->lineURI : std::string(), feature, failure](CommunicationsServiceEventIfc& event) {
        event.featureFailed(lineURI, 0, feature, failure);
    });
}

// --- what the calls report

void CallEngine::callChanged(Call& call, CallSnapshot const& before)
{
    CallSnapshot const now = call.snapshot();
    bool const isNew = before.state == sfiCallStateIdle;
    traceStep("engine", [&](TraceStep& step) { describe(step, call, isNew ? nullptr : &before); });
    incoming_.follow(now);
    established_.follow(now);
    pickups_.follow(now);
    callBacks_.follow(call, before);
    joined_.follow(now);
    if (now.ended()) {
        list_.remove(call);
    }
    publisher_.lineChanged(now.line.lineNumber);
    observers_.tell(
        [&now, &before, isNew](CallObserver& observer) { observer.callChanged(now, isNew ? nullptr : &before); });
}

void CallEngine::infoReceived(Call& call, sip::Content const& content)
{
    if (!server_.receive(call.line().lineURI, content)) {
        log(kLogInfo, kComponent, "call {}: INFO with {} is ignored", call.id(), content.type);
    }
}

// --- what the registrations and the user agent report

void CallEngine::registrationChanged(LineAccount const& line, bool registered)
{
    if (registered) {
        messages_.subscribe(line);
    }
    observers_.tell(
        [&line, registered](CallObserver& observer) { observer.registrationChanged(line.lineNumber, registered); });
}

std::optional<sip::GuardedUser> CallEngine::guardedUser(std::string const& user)
{
    auto const line = lines_.accountOfUser(user);
    if (!line) {
        return std::nullopt;
    }
    return sip::GuardedUser{line->account.user, line->account.password, line->registers, configuration_.permissions};
}

void CallEngine::onIncomingCall(std::unique_ptr<sip::Session> session)
{
    auto const line = lines_.accountOfUser(sip::userOf(session->invitation().requestUri));
    if (!line) {
        session->reject(404, "Not Found");
    } else if (!availability_.forNewCalls()) {
        session->reject(480, "Temporarily Unavailable");
    } else if (session->invitation().replaces) {
        joined_.replaceCall(std::move(session));
    } else if (session->invitation().joins) {
        joined_.joinCall(std::move(session), *line);
    } else {
        incoming_.take(std::move(session), *line);
    }
}

void CallEngine::onTransferRequested(std::unique_ptr<sip::Transfer> transfer)
{
    log(kLogWarning, kComponent, "a transfer to {} is refused: it belongs to no call", transfer->target());
    transfer->reject(603, "Decline");
}

void CallEngine::onSubscribe(std::unique_ptr<sip::Notifier> notifier)
{
    auto const line = lines_.accountOfUser(sip::userOf(notifier->requestUri()));
    if (!line) {
        notifier->reject(404, "Not Found");
    } else if (!availability_.active) {
        notifier->reject(480, "Temporarily Unavailable");
    } else if (notifier->event() != sip::kDialogEvent) {
        notifier->reject(489, "Bad Event", {{"Allow-Events", "dialog, refer"}});
    } else {
        publisher_.add(*line, std::move(notifier));
    }
}

void CallEngine::onUnsolicitedNotify(sip::NameAddr const&, sip::NameAddr const& to,
                                     sip::Notification const& notification)
{
    auto const line = lines_.accountOfUser(to.uri.user);
    if (line && availability_.active && notification.event == sip::kMessageSummaryEvent) {
        messages_.received(*line, notification.content.body);
    } else {
        log(kLogInfo, kComponent, "a NOTIFY of {} for {} is ignored", notification.event, to.uri.user);
    }
}

void CallEngine::onRequest(std::unique_ptr<sip::IncomingRequest>& request)
{
    if (request->method() != "INFO") {
        return;
    }
    auto const line = lines_.accountOfUser(sip::userOf(request->requestUri()));
    if (!line) {
        request->reply(404, "Not Found");
    } else if (server_.receive(line->lineURI, request->content())) {
        request->reply(200, "OK");
    } else {
        request->reply(415, "Unsupported Media Type", {{"Accept", "application/csta+xml"}});
    }
    request.reset();
}

}  // namespace telephone
