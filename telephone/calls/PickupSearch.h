// Finds the call that rings at a number: subscribes to the number's dialogs and waits for such a call. Used once. Owned
// by Pickups; called with the phone lock held.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "telephone/base/Refusal.h"
#include "telephone/calls/PickupTarget.h"
#include "telephone/sip/DialogInfo.h"
#include "telephone/sip/Subscription.h"
#include "telephone/sip/Timer.h"
#include "telephone/sip/UserAgent.h"

namespace telephone {

class PickupSearch final : private sip::SubscriptionObserver
{
public:
    // status: 200, the status of a refusal, or 408 when nothing rang in time. May destroy the search.
    using Found = std::function<void(std::optional<PickupTarget> const& target, int status)>;

    PickupSearch(sip::EventLoop& loop, Found found);

    [[nodiscard]] Outcome<> start(sip::UserAgent& agent, sip::Account const& account, std::string const& target,
                                  std::chrono::milliseconds patience);

private:
    void onNotify(sip::Subscription& subscription, sip::Notification const& notification) override;
    void onTerminated(sip::Subscription& subscription, int status, std::string const& reason) override;
    void finish(std::optional<PickupTarget> const& target, int status);

    Found found_;
    sip::Timer patience_;
    std::unique_ptr<sip::Subscription> subscription_;
};

// The ringing call among a number's dialogs; nothing: none rings.
std::optional<PickupTarget> ringingCall(sip::DialogInfo const& dialogs);

}  // namespace telephone
