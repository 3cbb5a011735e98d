// Asks a number for the call that rings there, once: subscribes to its dialogs and waits for one. Owned by the engine;
// called with the phone lock held.
#pragma once

#include "CallEngine.h"
#include "sip/DialogInfo.h"
#include "sip/Subscription.h"
#include "sip/Timer.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace telephone {

class PickupSearch final : private sip::SubscriptionObserver
{
public:
    // status: of the refusal, 408 when nothing rang in time, else 200. May destroy the search.
    using Found = std::function<void(const std::optional<PickupTarget>& target, int status)>;

    PickupSearch(sip::EventLoop& loop, Found found);

    // False: the question could not be sent.
    bool start(sip::UserAgent& agent, const sip::Account& account, const std::string& target,
               std::chrono::milliseconds patience, std::string& whyNot);

private:
    void onNotify(sip::Subscription& subscription, const sip::Notification& notification) override;
    void onTerminated(sip::Subscription& subscription, int status, const std::string& reason) override;
    void finish(const std::optional<PickupTarget>& target, int status);

    Found found_;
    sip::Timer patience_;
    std::unique_ptr<sip::Subscription> subscription_;
};

// The ringing call among the dialogs that a number told; nothing: none rings.
std::optional<PickupTarget> ringingCall(const sip::DialogInfo& dialogs);

}  // namespace telephone
