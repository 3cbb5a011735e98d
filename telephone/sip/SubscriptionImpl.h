// Subscription on the stack's event package support.
#pragma once

#include "telephone/sip/Element.h"
#include "telephone/sip/Subscription.h"

namespace telephone::sip {

class SubscriptionImpl final : public Subscription
{
public:
    SubscriptionImpl(std::shared_ptr<Element> element, SubscriptionRequest request, SubscriptionObserver& observer);
    ~SubscriptionImpl() override;

    [[nodiscard]] Outcome<> start(Account const& account);
    SubscriptionRequest const& request() const override { return request_; }

private:
    void onNotify(::sip* stack, sip_msg const& message);
    void onClose(int error, sip_msg const* message, sipevent_substate const* state);

    std::shared_ptr<Element> element_;
    SubscriptionRequest request_;
    SubscriptionObserver& observer_;
    Route route_;
    Ref<Credentials> credentials_;
    Ref<sipsub> subscription_;
    std::string lastReason_;
};

Notification readNotification(sip_msg const& notify);

}  // namespace telephone::sip
