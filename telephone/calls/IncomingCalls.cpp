#include "telephone/calls/IncomingCalls.h"

#include <mutex>
#include <utility>

#include "CommunicationsServiceEventIfc.h"
#include "telephone/calls/LogComponent.h"
#include "telephone/calls/SipMeaning.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/Refusals.h"
#include "telephone/sip/EventLoop.h"
#include "telephone/trace/TimerStep.h"

namespace telephone {

namespace {

Outcome<> notRinging(int callID, char const* operation)
{
    return refuse(RefusalKind::kWrongState,
                  fmt::format("call {} cannot {}: it is not ringing here", callID, operation));
}

}  // namespace

IncomingCalls::IncomingCalls(sip::EventLoop& loop, EngineConfiguration const& configuration, LineDirectory& lines,
                             CallPolicy const& policy, Availability const& availability, EventPoster const& post,
                             CallList& calls, EstablishedCalls& established)
    : loop_(loop)
    , configuration_(configuration)
    , lines_(lines)
    , policy_(policy)
    , availability_(availability)
    , post_(post)
    , calls_(calls)
    , established_(established)
    , forwarding_(policy, calls, post)
{}

Outcome<> IncomingCalls::answer(int callID)
{
    return calls_.with(callID, [this](Call& call) -> Outcome<> {
        if (!call.snapshot().alerting()) {
            return notRinging(call.id(), "be answered");
        }
        established_.afterHoldingOthers(call, sfiFeatureHold, [](Call& waiting, Outcome<> const& alone) {
            auto const answered = alone.and_then([&waiting] { return waiting.answer(); });
            if (reportIfRefused(kComponent, answered)) {
                waiting.postFeatureFailed(sfiFeatureHold, sfiFeatureFailureNotPossible);
            }
        });
        return {};
    });
}

Outcome<> IncomingCalls::reject(int callID, sfiRefuseCall reason)
{
    return calls_.with(callID, [reason](Call& call) -> Outcome<> {
        StatusLine const line = statusOf(reason);
        if (line.status == 0) {
            return refuse(RefusalKind::kBadInput, fmt::format("call {} cannot be refused: there is no reason {}",
                                                              call.id(), static_cast<int>(reason)));
        }
        return call.reject(line);
    });
}

Outcome<> IncomingCalls::deflect(int callID, std::string const& destination)
{
    return calls_.with(callID, [this, &destination](Call& call) {
        return lines_.targetFrom(call.line().lineNumber, destination).and_then([&](std::string const& target) {
            return call.snapshot().alerting()
                       ? redirect(call, target, call.session()->remoteParty(), sfiForwardReasonDeflected)
                       : notRinging(call.id(), "be deflected");
        });
    });
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
        alert(offer(std::move(session), line, callID, *place), line);
    } else if (!forwarding_.forward(*session, line, sfiForwardReasonBusy)) {
        log(kLogInfo, kComponent, "a call for line {} is refused: all its appearances are taken", line.lineURI);
        session->reject(486, "Busy Here");
    }
}

Call* IncomingCalls::takeToJoin(std::unique_ptr<sip::Session> session, LineAccount const& line)
{
    int const callID = calls_.freeCallID();
    auto const place = calls_.isFull() ? std::nullopt : lines_.seizeForIncoming(line.lineNumber, callID);
    if (!place) {
        log(kLogInfo, kComponent, "a call cannot join line {}: all its appearances are taken", line.lineURI);
        session->reject(486, "Busy Here");
        return nullptr;
    }
    return &offer(std::move(session), line, callID, *place);
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
    if (calls_.firstOnLine(line.lineNumber) != nullptr && forwarding_.forward(session, line, sfiForwardReasonBusy)) {
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

Call& IncomingCalls::offer(std::unique_ptr<sip::Session> session, LineAccount const& line, int callID,
                           LineAddress const& place)
{
    sfiCallType const type =
        isInternal(session->invitation().caller(), line) ? sfiCallTypeInternal : sfiCallTypeExternal;
    Call const* const current = calls_.firstOnLine(line.lineNumber);
    Call& call = calls_.add(calls_.make(callID, place, true));
    call.offer(std::move(session), type);
    if (associatedCalls_ && current != nullptr) {
        post_([lineURI = place.lineURI, currentID = current->id(), callID](CommunicationsServiceEventIfc& event) {
            event.incomingAssociatedCall(lineURI, currentID, callID);
        });
    }
    return call;
}

void IncomingCalls::alert(Call& call, LineAccount const& line)
{
    startNoReplyTimer(call, line);
    if (configuration_.automaticRinging) {
        reportIfRefused(kComponent, call.ring());
    }
}

void IncomingCalls::startNoReplyTimer(Call const& call, LineAccount const& line)
{
    sip::NameAddr const caller = call.session()->invitation().caller();
    int const rings = policy_.ringsBeforeNoReply(line.lineNumber);
    if (rings < 1 || !forwarding_.destination(line, caller, sfiForwardReasonNoReply)) {
        return;
    }
    auto const expired = [this, callID = call.id(), line] {
        timerRanOut(PhoneTimer::kNoReply);
        forwardUnanswered(callID, line);
    };
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
    if (auto const target = forwarding_.destination(line, caller, sfiForwardReasonNoReply)) {
        reportIfRefused(kComponent, redirect(*call, *target, caller, sfiForwardReasonNoReply));
    }
}

void IncomingCalls::follow(CallSnapshot const& now)
{
    if (!now.alerting()) {
        noReplyTimers_.erase(now.callID);
    }
}

}  // namespace telephone
