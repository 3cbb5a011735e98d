// Notifier on the stack's event package support.
#pragma once

#include "telephone/sip/ServerTransaction.h"
#include "telephone/sip/Subscription.h"

namespace telephone::sip {

class NotifierImpl final : public Notifier
{
public:
    NotifierImpl(std::shared_ptr<Element> element, sip_msg const& subscribe, sipevent_event const& event);
    ~NotifierImpl() override;

    std::string const& event() const override { return event_; }
    std::string requestUri() const override { return text(transaction_.request().ruri); }
    Headers const& headers() const override { return headers_; }
    Outcome<> accept(std::string const& contentType) override;
    void reject(int status, std::string const& reason, Headers const& headers) override;
    void notify(std::string const& body, SubscriptionState state, std::string const& reason) override;
    bool isActive() const override { return active_; }
    void onRefreshed(std::function<std::string()> body) override { refreshed_ = std::move(body); }
    void onClosed(std::function<void(Notifier&)> closed) override { closed_ = std::move(closed); }

    // Whether a request belongs to the dialog of this subscription.
    bool isOf(sip_msg const& request) const { return sip_dialog_cmp(dialog_.get(), &request); }
    // A SUBSCRIBE within a dialog, before the stack sees it: puts the present state in the place of the last body if it
    // belongs to this subscription.
    void prepareRefresh(sip_msg const& subscribe);

private:
    int acceptBy(sip_msg const& subscribe, std::string const& contentType);
    void onClose(int error, sip_msg const* message);

    std::shared_ptr<Element> element_;
    ServerTransaction transaction_;
    Ref<sip_dialog> dialog_;
    Ref<sipnot> notifier_;
    Ref<mbuf> content_;  // the last body, shared with the stack
    std::string event_;
    Headers headers_;
    std::function<std::string()> refreshed_;
    std::function<void(Notifier&)> closed_;
    bool active_ = false;
};

}  // namespace telephone::sip
