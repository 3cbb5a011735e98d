// What is asked of a call that exists.
#include <algorithm>
#include <utility>

#include "CommunicationsServiceEventIfc.h"
#include "telephone/calls/CallEngineImpl.h"

namespace telephone {

namespace {

std::string callText(int callID)
{
    return "call " + std::to_string(callID) + ": ";
}

}  // namespace

sfiResult CallEngine::Impl::ring(int callID)
{
    Call* call = require(callID, "accept");
    if (call == nullptr) {
        return sfiFailure;
    }
    return call->ring() ? sfiSuccess : refused(callText(callID) + "cannot ring, it is not offered to this telephone");
}

sfiResult CallEngine::Impl::answer(int callID)
{
    Call* call = require(callID, "answer");
    if (call == nullptr) {
        return sfiFailure;
    }
    if (!call->snapshot().alerting()) {
        return refused(callText(callID) + "cannot be answered, it does not ring here");
    }
    afterHoldingOthers(*call, sfiFeatureHold, [this](Call& waiting, bool alone) {
        if (alone && waiting.answer()) {
            return;
        }
        log(sip::LogLevel::kWarning, callText(waiting.id()) + "cannot be answered: " +
                                         (alone ? "it rings no longer" : "the other call could not be held"));
        waiting.postFeatureFailed(sfiFeatureHold, sfiFeatureFailureNotPossible);
    });
    return sfiSuccess;
}

sfiResult CallEngine::Impl::refuse(int callID, sfiRefuseCall reason)
{
    Call* call = require(callID, "refuse");
    if (call == nullptr) {
        return sfiFailure;
    }
    const StatusLine line = statusOf(reason);
    if (line.status == 0) {
        return refused(callText(callID) + "there is no refusal " + std::to_string(reason));
    }
    if (!call->refuse(line)) {
        return refused(callText(callID) + "cannot be refused, it does not ring here");
    }
    return sfiSuccess;
}

sfiResult CallEngine::Impl::deflect(int callID, std::string const& destination)
{
    Call* call = require(callID, "deflect");
    auto const line = call != nullptr ? accountOf(call->line().lineNumber) : std::nullopt;
    if (!line) {
        return sfiFailure;
    }
    auto const target = targetOf(destination, line->account);
    if (!target) {
        return refused(callText(callID) + "\"" + destination + "\" is nowhere to deflect to");
    }
    if (!call->snapshot().alerting()) {
        return refused(callText(callID) + "cannot be deflected, it does not ring here");
    }
    const sip::NameAddr caller = call->session()->remoteParty();
    const std::string lineURI = call->line().lineURI;
    if (!call->redirect(*target, sfiForwardReasonDeflected)) {
        return refused(callText(callID) + "cannot be deflected, it is being answered");
    }
    postForwarded(lineURI, callID, caller, *target, sfiForwardReasonDeflected);
    return sfiSuccess;
}

sfiResult CallEngine::Impl::clear(int callID, CSTAEventCause cause)
{
    Call* call = require(callID, "clear");
    if (call == nullptr) {
        return sfiFailure;
    }
    call->clear(cause);
    return sfiSuccess;
}

sfiResult CallEngine::Impl::hold(int callID, sfiFeature feature)
{
    Call* call = require(callID, "hold");
    if (call == nullptr) {
        return sfiFailure;
    }
    // A conference is held and retrieved as a whole.
    Call* other = otherInConference(*call);
    if (!call->hold(feature)) {
        return refused(callText(callID) + "cannot be held, it is not connected");
    }
    if (other != nullptr) {
        other->hold(feature);
    }
    return sfiSuccess;
}

sfiResult CallEngine::Impl::retrieve(int callID, sfiFeature feature)
{
    Call* call = require(callID, "retrieve");
    if (call == nullptr) {
        return sfiFailure;
    }
    if (!call->isEstablished() || !call->snapshot().held) {
        return refused(callText(callID) + "cannot be retrieved, this telephone does not hold it");
    }
    afterHoldingOthers(*call, sfiFeatureHold, [this, feature](Call& waiting, bool alone) {
        const auto done = [this, feature, callID = waiting.id()](bool retrieved) {
            Call* now = find(callID);
            if (retrieved && now != nullptr && feature == sfiFeatureAlternate) {
                now->postFeatureSuccess(feature);
            }
        };
        if (!alone || !waiting.retrieve(feature, done)) {
            log(sip::LogLevel::kWarning, callText(waiting.id()) + "cannot be retrieved: " +
                                             (alone ? "it is not held" : "the other call could not be held"));
            waiting.postFeatureFailed(feature, sfiFeatureFailureNotPossible);
            return;
        }
        if (Call* other = otherInConference(waiting); other != nullptr && other->snapshot().held) {
            other->retrieve(feature);
        }
    });
    return sfiSuccess;
}

sfiResult CallEngine::Impl::alternate(int recordLine)
{
    auto const place = requireLine(recordLine, 0, "alternate");
    if (!place) {
        return sfiFailure;
    }
    // The one held last on the line, else the one held last at all.
    auto held = std::find_if(holdOrder_.rbegin(), holdOrder_.rend(), [this, &place](int callID) {
        const Call* call = find(callID);
        return call != nullptr && call->line().lineNumber == place->lineNumber;
    });
    if (held == holdOrder_.rend()) {
        held = holdOrder_.rbegin();
    }
    if (held == holdOrder_.rend()) {
        return refused("alternate: no call is held");
    }
    if (speakingCalls(nullptr).empty()) {
        return refused("alternate: no call is active beside the held one");
    }
    return retrieve(*held, sfiFeatureAlternate);
}

sfiResult CallEngine::Impl::sendDigits(int callID, std::string const& digits)
{
    Call* call = require(callID, "digits");
    if (call == nullptr) {
        return sfiFailure;
    }
    if (digits.empty() || digits.find_first_not_of("0123456789*#ABCD") != std::string::npos) {
        return refused(callText(callID) + "\"" + digits + "\" are no digits (0-9 * # A-D)");
    }
    if (!call->sendDigits(digits)) {
        return refused(callText(callID) + "cannot take digits, it is not connected");
    }
    return sfiSuccess;
}

sfiResult CallEngine::Impl::changeSecurity(int callID, bool secure)
{
    Call* call = require(callID, "security change");
    if (call == nullptr) {
        return sfiFailure;
    }
    if (secure) {
        return refused(callText(callID) + "cannot be secured, this telephone has no encrypted audio");
    }
    if (!call->renewMedia()) {
        return refused(callText(callID) + "cannot be negotiated again, it is not connected");
    }
    return sfiSuccess;
}

void CallEngine::Impl::setMicrophoneMute(bool mute)
{
    muted_ = mute;
    for (auto const& call : calls_) {
        call->setMuted(mute);
    }
    for (CallObserver* observer : std::vector(observers_)) {
        observer->microphoneMuteChanged(mute);
    }
}

void CallEngine::Impl::setServiceState(sfiServiceState state)
{
    serviceState_ = state;
    if (!active_) {
        return;
    }
    registrations_->refresh(state == sfiServiceOutOfService ? std::vector<LineAccount>() : lines_.accounts());
}

void CallEngine::Impl::featureFailed(int recordLine, sfiFeature feature, sfiFeatureFailure failure)
{
    auto const isMeant = [recordLine](Call const& call) {
        return recordLine == 0 || call.line().recordLine == recordLine || call.line().lineNumber == recordLine;
    };
    const std::vector<Call*> speaking = speakingCalls(nullptr);
    auto const active =
        std::find_if(speaking.begin(), speaking.end(), [&](Call const* call) { return isMeant(*call); });
    if (active != speaking.end()) {
        (*active)->postFeatureFailed(feature, failure);
        return;
    }
    auto const any = std::find_if(calls_.begin(), calls_.end(), [&](auto const& call) { return isMeant(*call); });
    if (any != calls_.end()) {
        (*any)->postFeatureFailed(feature, failure);
        return;
    }
    auto const line = lines_.addressOf(recordLine, 0);
    post([lineURI = line ? line->lineURI : std::string(), feature, failure](CommunicationsServiceEventIfc& event) {
        event.featureFailed(lineURI, 0, feature, failure);
    });
}

}  // namespace telephone
