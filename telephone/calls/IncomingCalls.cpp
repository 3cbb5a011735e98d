#include "telephone/calls/IncomingCalls.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "CommunicationsServiceEventIfc.h"
#include "telephone/calls/LogComponent.h"
#include "telephone/calls/SipMeaning.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/Refusals.h"
#include "telephone/sip/EventLoop.h"

namespace telephone {

namespace {

tl::unexpected<Refusal> notRinging(int callID, char const* operation)
{
    return refuse(RefusalKind::kWrongState,
                  fmt::format("call {} cannot {}: it is not ringing here", callID, operation));
}

}  // namespace

IncomingCalls::IncomingCalls(Parts const& parts)
    : loop_(parts.loop)
    , configuration_(parts.configuration)
    , lines_(parts.lines)
    , policy_(parts.policy)
    , availability_(parts.availability)
    , post_(parts.post)
    , calls_(parts.calls)
    , established_(parts.established)
    , forwarding_(parts.policy, parts.calls, parts.post)
{}

Outcome<> IncomingCalls::ring(int callID)
{
    std::lock_guard const guard(loop_);
    Call* const call = calls_.find(callID);
    if (call == nullptr) {
        return noSuchCall(callID);
    }
    return call->ring();
}

Outcome<> IncomingCalls::answer(int callID)
{
    std::lock_guard const guard(loop_);
    Call* const call = calls_.find(callID);
    if (call == nullptr) {
        return noSuchCall(callID);
    }
    if (!call->snapshot().alerting()) {
        return notRinging(callID, "be answered");
    }
    established_.afterHoldingOthers(*call, sfiFeatureHold, [](Call& waiting, Outcome<> const& alone) {
        auto const answered = alone.and_then([&waiting] { return waiting.answer(); });
        if (reportIfRefused(kComponent, answered)) {
            waiting.postFeatureFailed(sfiFeatureHold, sfiFeatureFailureNotPossible);
        }
    });
    return {};
}

Outcome<> IncomingCalls::reject(int callID, sfiRefuseCall reason)
{
    std::lock_guard const guard(loop_);
    Call* const call = calls_.find(callID);
    if (call == nullptr) {
        return noSuchCall(callID);
    }
    StatusLine const line = statusOf(reason);
    if (line.status == 0) {
        return refuse(RefusalKind::kBadInput, fmt::format("call {} cannot be refused: there is no reason {}", callID,
                                                          static_cast<int>(reason)));
    }
    return call->reject(line);
}

Outcome<> IncomingCalls::deflect(int callID, std::string const& destination)
{
    std::lock_guard const guard(loop_);
    Call* const call = calls_.find(callID);
    if (call == nullptr) {
        return noSuchCall(callID);
    }
    auto const target = lines_.accountOfLine(call->line().lineNumber).and_then([&](LineAccount const& line) {
        return callTarget(destination, line.account);
    });
    if (!target) {
        return tl::unexpected(target.error());
    }
    if (!call->snapshot().alerting()) {
        return notRinging(callID, "be deflected");
    }
    return redirect(*call, *target, call->session()->remoteParty(), sfiForwardReasonDeflected);
}

Outcome<> IncomingCalls::redirect(Call& call, std::string const& target, sip::NameAddr const& caller,
                                  sfiForwardReason reason)
{
    auto redirected = call.redirect(target, reason);
    if (redirected) {
        forwarding_.postForwarded(call.line().lineURI, call.id(), caller, target, reason);
    }
    return redirected;
}

void IncomingCalls::setAssociatedCalls(bool associated)
{
    std::lock_guard const guard(loop_);
    associatedCalls_ = associated;
}

void IncomingCalls::take(std::unique_ptr<sip::Session> session, LineAccount const& line)
{
    if (turnAway(*session, line)) {
        return;
    }
    int const callID = calls_.freeCallID();
    auto const place = lines_.seizeForIncoming(line.lineNumber, callID);
    if (place) {
        offer(std::move(session), line, callID, *place);
    } else if (!forwarding_.forward(*session, line, sfiForwardReasonBusy)) {
        log(kLogInfo, kComponent, "a call for line {} is refused: all its appearances are taken", line.lineURI);
        session->reject(486, "Busy Here");
    }
}

// True: the call was forwarded or refused.
bool IncomingCalls::turnAway(sip::Session& session, LineAccount const& line)
{
    if (forwarding_.forward(session, line, sfiForwardReasonUnconditional)) {
        return true;
    }
    if (policy_.doNotDisturb(line.lineNumber) || availability_.serviceState == sfiServiceDoNotDisturb) {
        rejectUndisturbed(session, line);
        return true;
    }
    if (calls_.hasCallOnLine(line.lineNumber) && forwarding_.forward(session, line, sfiForwardReasonBusy)) {
        return true;
    }
    if (!calls_.isFull()) {
        return false;
    }
    log(kLogWarning, kComponent, "a call for line {} is refused: there are {} calls already", line.lineURI,
        calls_.maximum());
    session.reject(486, "Busy Here");
    return true;
}

void IncomingCalls::rejectUndisturbed(sip::Session& session, LineAccount const& line)
{
    bool const busy = configuration_.doNotDisturbStatus != 480;
    sip::NameAddr const caller = session.invitation().caller();
    session.reject(busy ? 486 : 480, busy ? "Busy Here" : "Temporarily Unavailable");
    post_([lineURI = line.lineURI, callID = calls_.freeCallID(), uri = displayUri(caller), name = caller.displayName,
           busy](CommunicationsServiceEventIfc& event) {
        event.incomingCallMissed(lineURI, callID, uri, name, busy ? sfiReasonBusy : sfiReasonUnavailable, {}, {},
                                 sfiForwardReasonNone);
    });
}

void IncomingCalls::offer(std::unique_ptr<sip::Session> session, LineAccount const& line, int callID,
                          LineAddress const& place)
{
    sfiCallType const type =
        isInternal(session->invitation().caller(), line) ? sfiCallTypeInternal : sfiCallTypeExternal;
    auto const current = std::find_if(calls_.all().begin(), calls_.all().end(),
                                      [&line](auto const& call) { return call->line().lineNumber == line.lineNumber; });
    bool const isAssociated = associatedCalls_ && current != calls_.all().end();
    int const currentID = isAssociated ? (*current)->id() : 0;
    Call& call = calls_.add(calls_.make(callID, place, true));
    call.offer(std::move(session), type);
    if (isAssociated) {
        post_([lineURI = place.lineURI, currentID, callID](CommunicationsServiceEventIfc& event) {
            event.incomingAssociatedCall(lineURI, currentID, callID);
        });
    }
    startNoReplyTimer(call, line);
    if (!configuration_.automaticRinging) {
        return;
    }
    reportIfRefused(kComponent, call.ring());
}

void IncomingCalls::startNoReplyTimer(Call const& call, LineAccount const& line)
{
    sip::NameAddr const caller = call.session()->invitation().caller();
    int const rings = policy_.ringsBeforeNoReply();
    if (rings < 1 || !forwarding_.destination(line, caller, sfiForwardReasonNoReply)) {
        return;
    }
    auto const expired = [this, callID = call.id(), line] { forwardUnanswered(callID, line); };
    noReplyTimers_.insert_or_assign(call.id(), sip::Timer(loop_, rings * configuration_.ringTime, expired));
}

// The rule in force when the timer expires applies.
void IncomingCalls::forwardUnanswered(int callID, LineAccount const& line)
{
    Call* const call = calls_.find(callID);
    if (call == nullptr) {
        return;
    }
    sip::NameAddr const caller = call->session()->invitation().caller();
    auto const target = forwarding_.destination(line, caller, sfiForwardReasonNoReply);
    if (!target) {
        return;
    }
    reportIfRefused(kComponent, redirect(*call, *target, caller, sfiForwardReasonNoReply));
}

void IncomingCalls::follow(CallSnapshot const& now)
{
    if (!now.alerting()) {
        noReplyTimers_.erase(now.callID);
    }
}

}  // namespace telephone
