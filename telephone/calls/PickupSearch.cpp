#include "telephone/calls/PickupSearch.h"

#include <algorithm>
#include <utility>

namespace telephone {

std::optional<PickupTarget> ringingCall(std::vector<sip::DialogEntry> const& dialogs)
{
    auto const ringing = std::find_if(dialogs.begin(), dialogs.end(), [](sip::DialogEntry const& entry) {
        return entry.recipient && entry.state == sip::DialogState::kEarly && !entry.dialog.callId.empty();
    });
    if (ringing == dialogs.end()) {
        return std::nullopt;
    }
    PickupTarget target;
    target.targetURI = ringing->remote.target.empty() ? ringing->remote.identity : ringing->remote.target;
    // As the caller sees the dialog, since it is the caller who is called.
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

bool PickupSearch::start(sip::UserAgent& agent, sip::Account const& account, std::string const& target,
                         std::chrono::milliseconds patience, std::string& whyNot)
{
    auto const changed = [this](std::vector<sip::DialogEntry> const& dialogs) {
        if (auto const found = ringingCall(dialogs)) {
            finish(found, 200);
        }
    };
    auto const ended = [this](int status, std::string const&) { finish(std::nullopt, status < 300 ? 480 : status); };
    auto subscription = sip::DialogSubscription::start(agent, account, target, changed, ended, 60);
    if (!subscription) {
        whyNot = subscription.error().reason;
        return false;
    }
    subscription_ = std::move(*subscription);
    patience_.start(patience, [this] { finish(std::nullopt, 408); });
    return true;
}

void PickupSearch::finish(std::optional<PickupTarget> const& target, int status)
{
    patience_.cancel();
    if (const Found found = std::exchange(found_, {})) {
        found(target, status);
    }
}

}  // namespace telephone
