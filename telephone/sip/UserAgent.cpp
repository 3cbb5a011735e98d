#include "UserAgent.h"

#include "ClientRequest.h"
#include "EventLoop.h"
#include "RegistrationImpl.h"
#include "SessionImpl.h"
#include "SubscriptionImpl.h"
#include "UserAgentImpl.h"

#include <mutex>

namespace telephone::sip {

UserAgent::UserAgent(EventLoop& loop, UserAgentConfig config, UserAgentObserver& observer)
    : impl_(std::make_shared<Impl>(loop, std::move(config), observer))
{
    std::lock_guard guard(loop);
    try {
        impl_->open();
    } catch (...) {
        impl_->close();
        throw;
    }
}

UserAgent::~UserAgent()
{
    impl_->close();
    std::lock_guard guard(impl_->loop);
    impl_.reset();
}

EventLoop& UserAgent::loop() const
{
    return impl_->loop;
}

std::string UserAgent::address() const
{
    return impl_->config.address;
}

std::uint16_t UserAgent::udpPort() const
{
    return impl_->udpPort;
}

std::uint16_t UserAgent::tcpPort() const
{
    return impl_->tcpPort;
}

std::string UserAgent::hostPort(Transport transport) const
{
    sa local = impl_->address;
    sa_set_port(&local, transport == Transport::kTcp ? impl_->tcpPort : impl_->udpPort);
    return addressText(local);
}

std::unique_ptr<Session> UserAgent::call(const CallRequest& request, SessionObserver& observer, std::string* whyNot)
{
    std::lock_guard guard(impl_->loop);
    const std::string what = "No call to " + request.target;
    std::string why;
    const auto route = impl_->routeTo(request.account, request.target, why);
    if (!route) {
        impl_->refuse(what, why, whyNot);
        return nullptr;
    }
    try {
        auto session = std::make_unique<SessionImpl>(impl_, request, *route, observer);
        const int error = session->start();
        if (!error)
            return session;
        session->setObserver(nullptr);
        why = errorText(error);
    } catch (const std::exception& exception) {
        why = exception.what();
    }
    impl_->refuse(what, why, whyNot);
    return nullptr;
}

std::unique_ptr<Subscription> UserAgent::subscribe(const Account& account, const SubscriptionRequest& request,
                                                   SubscriptionObserver& observer, std::string* whyNot)
{
    std::lock_guard guard(impl_->loop);
    std::string why;
    if (const auto route = impl_->routeTo(account, request.target, why)) {
        auto subscription = std::make_unique<SubscriptionImpl>(impl_, request, observer);
        const int error = subscription->start(account, *route);
        if (!error)
            return subscription;
        why = errorText(error);
    }
    impl_->refuse("No subscription to " + request.event + " of " + request.target, why, whyNot);
    return nullptr;
}

std::unique_ptr<Registration> UserAgent::registerAccount(const Account& account, RegistrationObserver& observer)
{
    std::lock_guard guard(impl_->loop);
    return std::make_unique<RegistrationImpl>(impl_, account, observer);
}

bool UserAgent::request(const Account& account, const std::string& method, const std::string& target,
                        const Headers& headers, const Content& content, ResponseHandler done)
{
    std::lock_guard guard(impl_->loop);
    std::string why;
    const auto route = impl_->routeTo(account, target, why);
    const auto request = route ? ClientRequest::make(impl_, account, *route, route->target, why) : nullptr;
    if (!request) {
        impl_->refuse("No " + method + " to " + target, why, nullptr);
        return false;
    }
    const auto answered = [agent = std::weak_ptr<Impl>(impl_), done = std::move(done)](int error,
                                                                                       const sip_msg* message) {
        const auto alive = agent.lock();
        if (!alive || alive->isClosed() || !done)
            return;
        if (!error && message)
            done(responseOf(*message));
        else
            done({error == ETIMEDOUT ? 408 : 503, errorText(error), {}, {}});
    };
    const int error = request->send(method, replyTail(headers, content), std::nullopt, answered);
    if (error)
        impl_->refuse("No " + method + " to " + target, errorText(error), nullptr);
    return error == 0;
}

}  // namespace telephone::sip
