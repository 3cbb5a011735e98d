// A subscription of ours, behind the interface.
#pragma once

#include "telephone/sip/Subscription.h"
#include "telephone/sip/UserAgentImpl.h"

namespace telephone::sip {

class SubscriptionImpl final : public Subscription
{
public:
    SubscriptionImpl(std::shared_ptr<UserAgent::Impl> agent, SubscriptionRequest request,
                     SubscriptionObserver& observer);
    ~SubscriptionImpl() override;

    int start(Account const& account, Route const& route);
    SubscriptionRequest const& request() const override { return request_; }

private:
    void onNotify(sip_msg const& message);
    void onClose(int error, sip_msg const* message);

    std::shared_ptr<UserAgent::Impl> agent_;
    SubscriptionRequest request_;
    SubscriptionObserver& observer_;
    Ref<Credentials> credentials_;
    Ref<sipsub> subscription_;
    std::string lastReason_;
};

// What a NOTIFY says.
Notification readNotification(sip_msg const& notify);

}  // namespace telephone::sip
