#include "telephone/sip/UserAgent.h"

#include <mutex>
#include <stdexcept>

#include "telephone/sip/ClientRequest.h"
#include "telephone/sip/EventLoop.h"
#include "telephone/sip/LocalAddresses.h"
#include "telephone/sip/Receiver.h"
#include "telephone/sip/RegistrationImpl.h"
#include "telephone/sip/SessionImpl.h"
#include "telephone/sip/SubscriptionImpl.h"

namespace telephone::sip {

UserAgent::UserAgent(EventLoop& loop, UserAgentConfig config, UserAgentObserver& observer)
    : element_(std::make_shared<Element>(loop, std::move(config)))
    , receiver_(std::make_shared<Receiver>(element_, observer))
{
    std::lock_guard guard(loop);
    try {
        element_->open();
        receiver_->listen();
    } catch (...) {
        receiver_->close();
        throw;
    }
}

UserAgent::~UserAgent()
{
    receiver_->close();
    std::lock_guard guard(element_->loop());
    receiver_.reset();
    element_.reset();
}

EventLoop& UserAgent::loop() const
{
    return element_->loop();
}

std::string UserAgent::address() const
{
    return hostText(element_->address());
}

std::uint16_t UserAgent::udpPort() const
{
    return element_->port(SIP_TRANSP_UDP);
}

std::uint16_t UserAgent::tcpPort() const
{
    return element_->port(SIP_TRANSP_TCP);
}

std::uint16_t UserAgent::tlsPort() const
{
    return element_->port(SIP_TRANSP_TLS);
}

std::string UserAgent::hostPort(Transport transport) const
{
    return element_->hostPort(element_->address(), stackTransport(transport));
}

Outcome<> UserAgent::sendDatagram(std::string const& target, std::string_view bytes) const
{
    std::lock_guard guard(element_->loop());
    auto const uri = Uri::parse(target);
    sa address{};
    if (!uri || sa_set_str(&address, uri->host.c_str(), uri->port == 0 ? std::uint16_t{SIP_PORT} : uri->port) != 0) {
        return refuse(RefusalKind::kBadInput, "\"" + target + "\" is not a SIP URI with an IP address");
    }
    Ref<mbuf> buffer;
    return sent(fill(buffer, bytes) ? sip_send(element_->stack(), nullptr, SIP_TRANSP_UDP, &address, buffer.get())
                                    : ENOMEM,
                "a datagram to " + target);
}

void UserAgent::log(LogLevel level, std::string const& line) const
{
    element_->log(level, line);
}

Outcome<std::unique_ptr<Session>> UserAgent::call(CallRequest const& request, SessionObserver& observer)
{
    std::lock_guard guard(element_->loop());
    auto const route = element_->usableRouteTo(request.account, request.target);
    if (!route) {
        return tl::unexpected(route.error());
    }
    try {
        auto session = std::make_unique<SessionImpl>(element_, request, *route, observer);
        if (auto const started = session->start(); !started) {
            session->setObserver(nullptr);
            return tl::unexpected(started.error());
        }
        return session;
    } catch (std::exception const& exception) {
        return refuse(RefusalKind::kUnavailable, exception.what());
    }
}

Outcome<std::unique_ptr<Subscription>> UserAgent::subscribe(Account const& account, SubscriptionRequest const& request,
                                                            SubscriptionObserver& observer)
{
    std::lock_guard guard(element_->loop());
    auto subscription = std::make_unique<SubscriptionImpl>(element_, request, observer);
    if (auto const started = subscription->start(account); !started) {
        return tl::unexpected(started.error());
    }
    return subscription;
}

std::unique_ptr<Registration> UserAgent::registerAccount(Account const& account, RegistrationObserver& observer)
{
    std::lock_guard guard(element_->loop());
    return std::make_unique<RegistrationImpl>(element_, account, observer);
}

Outcome<> UserAgent::request(Account const& account, std::string const& method, std::string const& target,
                             Headers const& headers, Content const& content, ResponseHandler done)
{
    std::lock_guard guard(element_->loop());
    auto const route = element_->usableRouteTo(account, target);
    if (!route) {
        return tl::unexpected(route.error());
    }
    auto const request = ClientRequest::make(element_, account, *route, route->target);
    if (!request) {
        return tl::unexpected(request.error());
    }
    auto const answered = [element = std::weak_ptr<Element>(element_), route = *route,
                           done = std::move(done)](int error, sip_msg const* message) {
        auto const alive = element.lock();
        if (!alive || alive->isClosed() || !done) {
            return;
        }
        if (!error && message) {
            done(responseOf(*message));
        } else {
            done(alive->failureOf(error, route));
        }
    };
    return (*request)->send(method, replyTail(headers, content), std::nullopt, answered);
}

}  // namespace telephone::sip
