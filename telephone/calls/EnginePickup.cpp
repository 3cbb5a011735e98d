// Calls that are taken over from other telephones.
#include <algorithm>
#include <cstring>
#include <utility>

#include "telephone/calls/CallEngineImpl.h"

namespace telephone {

namespace {

template <std::size_t size>
void copyText(char (&field)[size], std::string const& text)
{
    const std::size_t length = std::min(text.size(), size - 1);
    std::memcpy(field, text.data(), length);
    field[length] = '\0';
}

sfiReplacesDisplay displayOf(PickupTarget const& target)
{
    sfiReplacesDisplay display{};
    copyText(display.callID, target.replaces.callId);
    copyText(display.toTag, target.replaces.toTag);
    copyText(display.fromTag, target.replaces.fromTag);
    copyText(display.calledName, target.calledName);
    copyText(display.called, target.calledURI);
    copyText(display.callingName, target.callingName);
    copyText(display.calling, target.callingURI);
    return display;
}

}  // namespace

std::unique_ptr<Call> CallEngine::Impl::newPickup(int recordLine, int appearance, int callID, sfiFeature feature,
                                                  sip::CallRequest& request)
{
    if (const std::string why = obstacle(callID); !why.empty()) {
        refused("pick up as call " + std::to_string(callID) + ": " + why);
        return nullptr;
    }
    auto const place = requireLine(recordLine, appearance, "pick up");
    auto const line = place ? accountOf(place->lineNumber) : std::nullopt;
    if (!line) {
        return nullptr;
    }
    request.account = line->account;
    auto call = newCall(callID, *place, false);
    call->setPickup(feature);
    return call;
}

sfiResult CallEngine::Impl::pickup(int recordLine, int appearance, int callID, PickupTarget const& target)
{
    sip::CallRequest request;
    auto call = newPickup(recordLine, appearance, callID, sfiFeatureDirectedPickup, request);
    if (!call) {
        return sfiFailure;
    }
    request.target = target.targetURI;
    request.replaces = target.replaces;
    call->setReplaces(displayOf(target));
    return begin(std::move(call), std::move(request));
}

sfiResult CallEngine::Impl::groupPickup(int recordLine, int appearance, int callID)
{
    sip::CallRequest request;
    if (configuration_.groupPickup.empty()) {
        return refused("group pick-up: no number for it is configured");
    }
    auto call = newPickup(recordLine, appearance, callID, sfiFeatureGroupPickup, request);
    if (!call) {
        return sfiFailure;
    }
    auto const target = targetOf(configuration_.groupPickup, request.account);
    if (!target) {
        return refused("group pick-up: line " + call->line().lineURI + " has no server");
    }
    request.target = *target;
    return begin(std::move(call), std::move(request));
}

sfiResult CallEngine::Impl::directedPickup(int recordLine, int appearance, int callID, std::string const& number)
{
    sip::CallRequest request;
    auto begun = newPickup(recordLine, appearance, callID, sfiFeatureDirectedPickup, request);
    if (!begun) {
        return sfiFailure;
    }
    auto const target = targetOf(number, request.account);
    if (!target) {
        return refused("pick up: \"" + number + "\" is no number or address");
    }
    auto search = std::make_unique<PickupSearch>(
        loop_, [this, callID, request](std::optional<PickupTarget> const& found, int status) {
            pickupFound(callID, request, found, status);
        });
    std::string whyNot;
    if (!search->start(*agent_, request.account, *target, configuration_.dialogAnswerTime, whyNot)) {
        return refused("pick up: " + whyNot);
    }
    pickups_[callID] = std::move(search);
    add(std::move(begun)).announceDialling(*target);
    return sfiSuccess;
}

void CallEngine::Impl::pickupFound(int callID, sip::CallRequest request, std::optional<PickupTarget> const& found,
                                   int status)
{
    auto const search = pickups_.find(callID);
    if (search != pickups_.end()) {
        oldPickups_.push_back(std::move(search->second));
        pickups_.erase(search);
        burial_.start(std::chrono::milliseconds(0), [this] { bury(); });
    }
    Call* call = find(callID);
    if (call == nullptr) {
        return;
    }
    if (!found) {
        log(sip::LogLevel::kWarning,
            "call " + std::to_string(callID) + ": nothing to pick up (" + std::to_string(status) + ')');
        call->postFeatureFailed(sfiFeatureDirectedPickup, featureFailureOf(status == 408 ? 404 : status));
        call->end({sfiCallStateFailed, status == 408 ? sfiReasonNotFound : endingOf(status).reason});
        return;
    }
    request.target = found->targetURI;
    request.replaces = found->replaces;
    call->setReplaces(displayOf(*found));
    dialWhenAlone(*call, std::move(request));
}

}  // namespace telephone
