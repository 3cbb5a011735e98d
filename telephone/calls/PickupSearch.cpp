#include "telephone/calls/PickupSearch.h"

#include <algorithm>
#include <utility>

#include <spdlog/fmt/fmt.h>

namespace telephone {

std::optional<PickupTarget> ringingCall(sip::DialogInfo const& dialogs)
{
    auto const ringing =
        std::find_if(dialogs.dialogs.begin(), dialogs.dialogs.end(), [](sip::DialogEntry const& entry) {
            return entry.recipient && entry.state == sip::DialogState::kEarly && !entry.dialog.callId.empty();
        });
    if (ringing == dialogs.dialogs.end()) {
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
    if (target.targetURI.empty()) {
        return std::nullopt;
    }
    return target;
}

PickupSearch::PickupSearch(sip::EventLoop& loop, Found found)
    : found_(std::move(found))
    , patience_(loop)
{}

Outcome<> PickupSearch::start(sip::UserAgent& agent, sip::Account const& account, std::string const& target,
                              std::chrono::milliseconds patience)
{
    sip::SubscriptionRequest request;
    request.target = target;
    request.event = sip::kDialogEvent;
    request.accept = sip::kDialogInfoType;
    request.expires = 60;
    std::string whyNot;
    subscription_ = agent.subscribe(account, request, *this, &whyNot);
    if (!subscription_) {
        return refuse(RefusalKind::kUnavailable, fmt::format("{} cannot be asked for its calls: {}", target, whyNot));
    }
    patience_.start(patience, [this] { finish(std::nullopt, 408); });
    return {};
}

void PickupSearch::onNotify(sip::Subscription&, sip::Notification const& notification)
{
    auto const dialogs = sip::DialogInfo::parse(notification.content.body);
    if (auto const target = dialogs ? ringingCall(*dialogs) : std::nullopt) {
        finish(target, 200);
    }
}

void PickupSearch::onTerminated(sip::Subscription&, int status, std::string const&)
{
    finish(std::nullopt, status < 300 ? 480 : status);
}

void PickupSearch::finish(std::optional<PickupTarget> const& target, int status)
{
    patience_.cancel();
    if (Found const found = std::exchange(found_, {})) {
        found(target, status);
    }
}

}  // namespace telephone
