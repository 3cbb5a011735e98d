#include "telephone/calls/Pickups.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <utility>

#include "telephone/framework/Log.h"
#include "telephone/sip/EventLoop.h"

namespace telephone {

namespace {

template <std::size_t size>
void copyText(char (&field)[size], std::string const& text)
{
    std::size_t const length = std::min(text.size(), size - 1);
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

void aimAt(PickupTarget const& target, Call& call, sip::CallRequest& request)
{
    request.target = target.targetURI;
    request.replaces = target.replaces;
    call.setReplaces(displayOf(target));
}

}  // namespace

Pickups::Pickups(sip::UserAgent& agent, EngineConfiguration const& configuration, CallList& calls,
                 OutgoingCalls& outgoing)
    : agent_(agent)
    , configuration_(configuration)
    , calls_(calls)
    , outgoing_(outgoing)
    , burial_(agent.loop())
{}

Outcome<OutgoingCalls::Draft> Pickups::draft(int recordLine, int appearance, int callID, sfiFeature feature) const
{
    auto draft = outgoing_.draft(recordLine, appearance, callID);
    if (draft) {
        draft->call->setPickup(feature);
    }
    return draft;
}

Outcome<> Pickups::takeOver(int recordLine, int appearance, int callID, PickupTarget const& target)
{
    std::lock_guard const guard(agent_.loop());
    auto draft = this->draft(recordLine, appearance, callID, sfiFeatureDirectedPickup);
    if (!draft) {
        return tl::unexpected(draft.error());
    }
    aimAt(target, *draft->call, draft->request);
    return outgoing_.begin(std::move(*draft));
}

Outcome<> Pickups::group(int recordLine, int appearance, int callID)
{
    std::lock_guard const guard(agent_.loop());
    if (configuration_.groupPickup.empty()) {
        return refuse(RefusalKind::kNotSupported, "no call can be picked up: no group pick-up number is configured");
    }
    auto draft = this->draft(recordLine, appearance, callID, sfiFeatureGroupPickup);
    if (!draft) {
        return tl::unexpected(draft.error());
    }
    auto const target = callTarget(configuration_.groupPickup, draft->request.account);
    if (!target) {
        return tl::unexpected(target.error());
    }
    draft->request.target = *target;
    return outgoing_.begin(std::move(*draft));
}

Outcome<> Pickups::directed(int recordLine, int appearance, int callID, std::string const& number)
{
    std::lock_guard const guard(agent_.loop());
    auto draft = this->draft(recordLine, appearance, callID, sfiFeatureDirectedPickup);
    if (!draft) {
        return tl::unexpected(draft.error());
    }
    auto const target = callTarget(number, draft->request.account);
    if (!target) {
        return tl::unexpected(target.error());
    }
    auto const found = [this, callID, request = draft->request](std::optional<PickupTarget> const& call, int status) {
        this->found(callID, request, call, status);
    };
    auto search = std::make_unique<PickupSearch>(agent_.loop(), found);
    auto const started = search->start(agent_, draft->request.account, *target, configuration_.dialogAnswerTime);
    if (started) {
        searches_[callID] = std::move(search);
        calls_.add(std::move(draft->call)).announceDialling(*target);
    }
    return started;
}

void Pickups::found(int callID, sip::CallRequest request, std::optional<PickupTarget> const& target, int status)
{
    bury(callID);
    Call* const call = calls_.find(callID);
    if (call == nullptr) {
        return;
    }
    if (target) {
        aimAt(*target, *call, request);
        outgoing_.dialWhenAlone(*call, std::move(request));
        return;
    }
    log(kLogWarning, "calls", "call {}: there is nothing to pick up ({})", callID, status);
    call->postFeatureFailed(sfiFeatureDirectedPickup, featureFailureOf(status == 408 ? 404 : status));
    call->end({sfiCallStateFailed, status == 408 ? sfiReasonNotFound : endingOf(status).reason});
}

void Pickups::bury(int callID)
{
    auto const search = searches_.find(callID);
    if (search != searches_.end()) {
        over_.push_back(std::move(search->second));
        searches_.erase(search);
        burial_.start(std::chrono::milliseconds(0), [this] { over_.clear(); });
    }
}

void Pickups::follow(CallSnapshot const& now)
{
    if (now.ended()) {
        searches_.erase(now.callID);
    }
}

void Pickups::clear()
{
    searches_.clear();
    over_.clear();
    burial_.cancel();
}

}  // namespace telephone
