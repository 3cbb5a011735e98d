// A subscription that somebody asks of us, behind the interface.
#pragma once

#include "telephone/sip/Subscription.h"
#include "telephone/sip/UserAgentImpl.h"

namespace telephone::sip {

class NotifierImpl final : public Notifier
{
public:
    NotifierImpl(std::shared_ptr<UserAgent::Impl> agent, sip_msg const& subscribe, sipevent_event const& event);
    ~NotifierImpl() override;

    std::string const& event() const override { return event_; }
    std::string requestUri() const override { return text(subscribe_.get()->ruri); }
    NameAddr from() const override { return nameAddrOf(subscribe_.get()->from); }
    NameAddr to() const override { return nameAddrOf(subscribe_.get()->to); }
    Headers const& headers() const override { return headers_; }
    std::uint32_t expires() const override;
    bool accept(std::string const& contentType) override;
    bool reject(int status, std::string const& reason, Headers const& headers) override;
    bool notify(std::string const& body, SubscriptionState state, std::string const& reason) override;
    bool isActive() const override { return active_; }
    void onClosed(std::function<void(Notifier&)> closed) override { closed_ = std::move(closed); }

private:
    void close();

    std::shared_ptr<UserAgent::Impl> agent_;
    Ref<sip_msg> subscribe_;
    Ref<sipnot> notifier_;
    Ref<Credentials> credentials_;
    sip_strans* transaction_ = nullptr;
    std::string event_;
    Headers headers_;
    std::function<void(Notifier&)> closed_;
    bool answered_ = false;
    bool active_ = false;
};

}  // namespace telephone::sip
