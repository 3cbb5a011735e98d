// A subscription of ours, behind the interface.
#pragma once

#include "Subscription.h"
#include "UserAgentImpl.h"

namespace telephone::sip {

class SubscriptionImpl final : public Subscription
{
public:
    SubscriptionImpl(std::shared_ptr<UserAgent::Impl> agent, SubscriptionRequest request,
                     SubscriptionObserver& observer);
    ~SubscriptionImpl() override;

    int start(const Account& account, const Route& route);
    const SubscriptionRequest& request() const override { return request_; }

private:
    void onNotify(const sip_msg& message);
    void onClose(int error, const sip_msg* message);

    std::shared_ptr<UserAgent::Impl> agent_;
    SubscriptionRequest request_;
    SubscriptionObserver& observer_;
    Ref<Credentials> credentials_;
    Ref<sipsub> subscription_;
    std::string lastReason_;
};

// What a NOTIFY says.
Notification readNotification(const sip_msg& notify);

}  // namespace telephone::sip
