#include "telephone/sip/UserAgent.h"

#include <mutex>

#include "telephone/sip/ClientRequest.h"
#include "telephone/sip/EventLoop.h"
#include "telephone/sip/RegistrationImpl.h"
#include "telephone/sip/SessionImpl.h"
#include "telephone/sip/SubscriptionImpl.h"
#include "telephone/sip/UserAgentImpl.h"

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

std::unique_ptr<Session> UserAgent::call(CallRequest const& request, SessionObserver& observer, std::string* whyNot)
{
    std::lock_guard guard(impl_->loop);
    const std::string what = "No call to " + request.target;
    std::string why;
    auto const route = impl_->routeTo(request.account, request.target, why);
    if (!route) {
        impl_->refuse(what, why, whyNot);
        return nullptr;
    }
    try {
        auto session = std::make_unique<SessionImpl>(impl_, request, *route, observer);
        int const error = session->start();
        if (!error) {
            return session;
        }
        session->setObserver(nullptr);
        why = errorText(error);
    } catch (std::exception const& exception) {
        why = exception.what();
    }
    impl_->refuse(what, why, whyNot);
    return nullptr;
}

std::unique_ptr<Subscription> UserAgent::subscribe(Account const& account, SubscriptionRequest const& request,
                                                   SubscriptionObserver& observer, std::string* whyNot)
{
    std::lock_guard guard(impl_->loop);
    std::string why;
    if (auto const route = impl_->routeTo(account, request.target, why)) {
        auto subscription = std::make_unique<SubscriptionImpl>(impl_, request, observer);
        int const error = subscription->start(account, *route);
        if (!error) {
            return subscription;
        }
        why = errorText(error);
    }
    impl_->refuse("No subscription to " + request.event + " of " + request.target, why, whyNot);
    return nullptr;
}

std::unique_ptr<Registration> UserAgent::registerAccount(Account const& account, RegistrationObserver& observer)
{
    std::lock_guard guard(impl_->loop);
    return std::make_unique<RegistrationImpl>(impl_, account, observer);
}

bool UserAgent::request(Account const& account, std::string const& method, std::string const& target,
                        Headers const& headers, Content const& content, ResponseHandler done)
{
    std::lock_guard guard(impl_->loop);
    std::string why;
    auto const route = impl_->routeTo(account, target, why);
    auto const request = route ? ClientRequest::make(impl_, account, *route, route->target, why) : nullptr;
    if (!request) {
        impl_->refuse("No " + method + " to " + target, why, nullptr);
        return false;
    }
    auto const answered = [agent = std::weak_ptr<Impl>(impl_), done = std::move(done)](int error,
                                                                                       sip_msg const* message) {
        const auto alive = agent.lock();
        if (!alive || alive->isClosed() || !done) {
            return;
        }
        if (!error && message) {
            done(responseOf(*message));
        } else {
            done({error == ETIMEDOUT ? 408 : 503, errorText(error), {}, {}});
        }
    };
    int const error = request->send(method, replyTail(headers, content), std::nullopt, answered);
    if (error) {
        impl_->refuse("No " + method + " to " + target, errorText(error), nullptr);
    }
    return error == 0;
}

}  // namespace telephone::sip
