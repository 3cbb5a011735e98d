#include "telephone/calls/Pickups.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "telephone/calls/LogComponent.h"
#include "telephone/framework/Log.h"
#include "telephone/sip/EventLoop.h"
#include "telephone/sip/WireText.h"
#include "telephone/trace/TimerStep.h"

namespace telephone {

namespace {

constexpr std::uint32_t kSearchTime = 60;  // seconds for which the dialogs of a number are subscribed to

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
    copyText(display.callID, sip::plainText(target.replaces.callId));
    copyText(display.toTag, sip::plainText(target.replaces.toTag));
    copyText(display.fromTag, sip::plainText(target.replaces.fromTag));
    copyText(display.calledName, target.calledName);
    copyText(display.called, target.calledURI);
    copyText(display.callingName, target.callingName);
    copyText(display.calling, target.callingURI);
    return display;
}

// The first ringing call among these dialogs; nothing: no call is ringing.
std::optional<PickupTarget> ringingCall(std::vector<sip::DialogEntry> const& dialogs)
{
    auto const ringing = std::ranges::find_if(dialogs, [](sip::DialogEntry const& entry) {
        return entry.recipient && entry.state == sip::DialogState::kEarly && !entry.dialog.callId.empty();
    });
    if (ringing == dialogs.end() || (ringing->remote.target.empty() && ringing->remote.identity.empty())) {
        return std::nullopt;
    }
    PickupTarget target;
    target.targetURI = ringing->remote.target.empty() ? ringing->remote.identity : ringing->remote.target;
    // As the caller sees the dialog, since the caller is the one to call.
    target.replaces = {ringing->dialog.callId, ringing->dialog.remoteTag, ringing->dialog.localTag, true};
    target.callingURI = ringing->remote.identity;
    target.callingName = ringing->remote.displayName;
    target.calledURI = ringing->local.identity;
    target.calledName = ringing->local.displayName;
    return target;
}

void aimAt(PickupTarget const& target, Call& call, sip::CallRequest& request)
{
    request.target = target.targetURI;
    if (target.joins) {
        request.headers.add("Join", target.replaces.format());
    } else {
        request.replaces = target.replaces;
    }
    call.setReplaces(displayOf(target));
}

}  // namespace

Pickups::Pickups(sip::UserAgent& agent, EngineConfiguration const& configuration, CallList& calls,
                 OutgoingCalls& outgoing)
    : agent_(agent)
    , configuration_(configuration)
    , calls_(calls)
    , outgoing_(outgoing)
{}

Outcome<> Pickups::takeOver(int recordLine, int appearance, int callID, PickupTarget const& target)
{
    std::lock_guard const guard(agent_.loop());
    return outgoing_.draft(recordLine, appearance, callID).and_then([this, &target](OutgoingCalls::Draft&& draft) {
        draft.call->setPickup(sfiFeatureDirectedPickup);
        aimAt(target, *draft.call, draft.request);
        return outgoing_.begin(std::move(draft));
    });
}

Outcome<> Pickups::group(int recordLine, int appearance, int callID)
{
    std::lock_guard const guard(agent_.loop());
    if (configuration_.groupPickup.empty()) {
        return refuse(RefusalKind::kNotSupported, "no call can be picked up: no group pick-up number is configured");
    }
    return outgoing_.draft(recordLine, appearance, callID, configuration_.groupPickup)
        .and_then([this](OutgoingCalls::Draft&& draft) {
            draft.call->setPickup(sfiFeatureGroupPickup);
            return outgoing_.begin(std::move(draft));
        });
}

Outcome<> Pickups::directed(int recordLine, int appearance, int callID, std::string const& number)
{
    std::lock_guard const guard(agent_.loop());
    return outgoing_.draft(recordLine, appearance, callID, number)
        .and_then([this, callID](OutgoingCalls::Draft&& draft) {
            draft.call->setPickup(sfiFeatureDirectedPickup);
            return search(callID, draft.request).map([&] {
                calls_.add(std::move(draft.call)).announceDialling(draft.request.target);
            });
        });
}

Outcome<> Pickups::search(int callID, sip::CallRequest const& request)
{
    auto const changed = [this, callID](std::vector<sip::DialogEntry> const& dialogs) {
        if (auto const ringing = ringingCall(dialogs)) {
            found(callID, *ringing);
        }
    };
    auto const ended = [this, callID](int status, std::string const&) { failed(callID, status < 300 ? 480 : status); };
    auto dialogs = sip::DialogSubscription::start(agent_, request.account, request.target, changed, ended, kSearchTime);
    if (!dialogs) {
        return tl::unexpected(dialogs.error());
    }
    sip::Timer patience(agent_.loop(), configuration_.dialogAnswerTime, [this, callID] {
        timerRanOut(PhoneTimer::kPickupSilent);
        failed(callID, 404);
    });
    searches_.insert_or_assign(callID, Search{std::move(*dialogs), std::move(patience), request});
    return {};
}

void Pickups::found(int callID, PickupTarget const& target)
{
    auto search = searches_.extract(callID);
    Call* const call = calls_.find(callID);
    if (!search || call == nullptr) {
        return;
    }
    sip::CallRequest& request = search.mapped().request;
    aimAt(target, *call, request);
    outgoing_.dialWhenAlone(*call, std::move(request));
}

void Pickups::failed(int callID, int status)
{
    auto const search = searches_.extract(callID);
    Call* const call = calls_.find(callID);
    if (!search || call == nullptr) {
        return;
    }
    // No call is ringing at a number that does not answer.
    int const meaning = status == 408 ? 404 : status;
    log(kLogWarning, kComponent, "call {}: there is nothing to pick up ({})", callID, status);
    call->postFeatureFailed(sfiFeatureDirectedPickup, featureFailureOf(meaning));
    call->end({sfiCallStateFailed, endingOf(meaning).reason});
}

void Pickups::follow(CallSnapshot const& now)
{
    if (now.ended()) {
        searches_.erase(now.callID);
    }
}

}  // namespace telephone
