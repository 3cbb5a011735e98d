// Calls that go out, and the rule that only one call speaks at a time.
#include <algorithm>
#include <memory>
#include <utility>

#include "telephone/calls/CallEngineImpl.h"

namespace telephone {

std::optional<std::string> CallEngine::Impl::targetOf(std::string const& destination, sip::Account const& account) const
{
    const std::string target = sip::targetUri(destination, account.domain);
    auto const uri = sip::Uri::parse(target);
    if (destination.empty() || !uri || uri->host.empty()) {
        return std::nullopt;
    }
    return target;
}

std::string CallEngine::Impl::obstacle(int callID) const
{
    if (!active_) {
        return "the telephone is not active";
    }
    if (serviceState_ == sfiServiceOutOfService) {
        return "the telephone is out of service";
    }
    if (callID < 1) {
        return "a call id is 1 or more";
    }
    if (find(callID) != nullptr) {
        return "the call id is in use";
    }
    return isLimitReached() ? "no more calls than " + std::to_string(configuration_.maximumCalls) + " at once" : "";
}

// The numbers of the server that take over another telephone's call.
std::optional<sfiFeature> CallEngine::Impl::pickupOf(std::string const& destination) const
{
    std::string const& group = configuration_.groupPickup;
    std::string const& directed = configuration_.directedPickup;
    if (!group.empty() && destination == group) {
        return sfiFeatureGroupPickup;
    }
    if (!directed.empty() && destination.compare(0, directed.size(), directed) == 0) {
        return sfiFeatureDirectedPickup;
    }
    return std::nullopt;
}

sfiResult CallEngine::Impl::make(int recordLine, int appearance, int callID, std::string const& destination,
                                 CallPurpose purpose)
{
    const std::string what = "make call " + std::to_string(callID) + ": ";
    if (const std::string why = obstacle(callID); !why.empty()) {
        return refused(what + why);
    }
    auto const place = requireLine(recordLine, appearance, "make");
    auto const line = place ? accountOf(place->lineNumber) : std::nullopt;
    if (!line) {
        return sfiFailure;
    }
    auto const target = targetOf(destination, line->account);
    if (!target) {
        return refused(what + "\"" + destination + "\" is no number or address that line " + place->lineURI +
                       " can call");
    }
    auto call = newCall(callID, *place, false);
    if (auto const pickup = pickupOf(destination)) {
        call->setPickup(*pickup);
    }
    if (purpose == CallPurpose::kConsultation && !speakingCalls(nullptr).empty()) {
        call->setConsultation();
    }
    sip::CallRequest request;
    request.account = line->account;
    request.target = *target;
    const sfiResult result = begin(std::move(call), std::move(request));
    if (result == sfiSuccess) {
        callBacks_->called(*target);
    }
    return result;
}

sfiResult CallEngine::Impl::begin(std::unique_ptr<Call> begun, sip::CallRequest request)
{
    std::string whyNot;
    if (speakingCalls(begun.get()).empty()) {
        if (!begun->dial(*agent_, request, whyNot)) {
            return refused("make call " + std::to_string(begun->id()) + ": " + whyNot);
        }
        add(std::move(begun)).announceDialling(request.target);
        return sfiSuccess;
    }
    Call& call = add(std::move(begun));
    call.announceDialling(request.target);
    dialWhenAlone(call, std::move(request));
    return sfiSuccess;
}

void CallEngine::Impl::dialWhenAlone(Call& call, sip::CallRequest request)
{
    afterHoldingOthers(call, sfiFeatureConsultationHold,
                       [this, request = std::move(request)](Call& waiting, bool alone) {
                           std::string reason = "the other call could not be held";
                           if (alone && waiting.dial(*agent_, request, reason)) {
                               return;
                           }
                           log(sip::LogLevel::kWarning, "make call " + std::to_string(waiting.id()) + ": " + reason);
                           waiting.end({sfiCallStateFailed, alone ? sfiReasonServerFailure : sfiReasonRefused});
                       });
}

std::vector<Call*> CallEngine::Impl::speakingCalls(Call const* besides) const
{
    std::vector<Call*> speaking;
    for (auto const& call : calls_) {
        if (call.get() != besides && call->isEstablished() && !call->snapshot().held) {
            speaking.push_back(call.get());
        }
    }
    return speaking;
}

void CallEngine::Impl::afterHoldingOthers(Call& call, sfiFeature feature, std::function<void(Call&, bool)> then)
{
    const std::vector<Call*> others = speakingCalls(&call);
    if (others.empty()) {
        then(call, true);
        return;
    }
    struct Wait
    {
        std::size_t left;
        bool allHeld = true;
    };
    auto const wait = std::make_shared<Wait>(Wait{others.size()});
    auto const oneDone = [this, wait, callID = call.id(), then = std::move(then)](bool held) {
        wait->allHeld = wait->allHeld && held;
        if (--wait->left > 0) {
            return;
        }
        if (Call* waiting = find(callID)) {
            then(*waiting, wait->allHeld);
        }
    };
    for (Call* other : others) {
        // A call that ends instead of being held is out of the way too.
        auto const done = [this, oneDone, otherID = other->id()](bool held) {
            oneDone(held || find(otherID) == nullptr);
        };
        bool const forCall =
            feature == sfiFeatureConsultationHold && other->line().lineNumber == call.line().lineNumber;
        if (!other->hold(forCall ? feature : sfiFeatureHold, done)) {
            oneDone(false);
        }
    }
}

}  // namespace telephone
