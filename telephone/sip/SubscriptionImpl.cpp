#include "telephone/sip/SubscriptionImpl.h"

#include <mutex>

#include "telephone/sip/EventLoop.h"

namespace telephone::sip {

namespace {

// The value of a parameter of "terminated;reason=timeout;..."; empty without it.
std::string parameterOf(std::string const& value, char const* name)
{
    pl const whole = slice(value);
    pl found{};
    return msg_param_decode(&whole, name, &found) == 0 ? text(found) : std::string();
}

SubscriptionState stateOf(std::string const& value)
{
    std::string const state = value.substr(0, value.find_first_of("; "));
    if (equalsIgnoringCase(state, "terminated")) {
        return SubscriptionState::kTerminated;
    }
    return equalsIgnoringCase(state, "pending") ? SubscriptionState::kPending : SubscriptionState::kActive;
}

}  // namespace

Notification readNotification(sip_msg const& notify)
{
    Notification notification;
    notification.headers = headersOf(notify);
    notification.content = contentOf(notify);
    std::string const state = notification.headers.value("Subscription-State");
    notification.state = stateOf(state);
    notification.reason = parameterOf(state, "reason");
    std::string const event = notification.headers.value("Event");
    notification.event = event.substr(0, event.find_first_of("; "));
    return notification;
}

SubscriptionImpl::SubscriptionImpl(std::shared_ptr<Element> element, SubscriptionRequest request,
                                   SubscriptionObserver& observer)
    : element_(std::move(element))
    , request_(std::move(request))
    , observer_(observer)
{}

SubscriptionImpl::~SubscriptionImpl()
{
    std::lock_guard guard(element_->loop());
    subscription_.reset();
    credentials_.reset();
}

Outcome<> SubscriptionImpl::start(Account const& account)
{
    auto const route = element_->usableRouteTo(account, request_.target);
    if (!route) {
        return tl::unexpected(route.error());
    }
    route_ = *route;
    makeCredentials(credentials_, account, element_->config().log);
    Headers const headers = request_.accept.empty() ? Headers{} : Headers{{"Accept", request_.accept}};
    auto proxies = route->proxyTexts();
    int const error =
        sipevent_subscribe(subscription_.out(), element_->eventSocket(), route->target.c_str(), route->fromNameOrNull(),
                           route->fromUri.c_str(), request_.event.c_str(), nullptr, request_.expires,
                           route->contactUser.c_str(), proxies.data(), static_cast<std::uint32_t>(proxies.size()),
                           answerChallenge, credentials_.get(), true, nullptr, handlerOf<&SubscriptionImpl::onNotify>,
                           handlerOf<&SubscriptionImpl::onClose>, this, "%s", headers.format().c_str());
    return element_->sentTo(*route, error, "SUBSCRIBE to " + request_.target);
}

void SubscriptionImpl::onNotify(::sip* /*stack*/, sip_msg const& message)
{
    element_->answer(message, 200, "OK");
    Notification const notification = readNotification(message);
    lastReason_ = notification.reason;
    observer_.onNotify(*this, notification);
}

void SubscriptionImpl::onClose(int error, sip_msg const* message, sipevent_substate const* /*state*/)
{
    if (error == ETIMEDOUT) {
        observer_.onTerminated(*this, 408, "Request Timeout");
    } else if (message && !message->req && message->scode >= 300) {
        observer_.onTerminated(*this, message->scode, text(message->reason));
    } else if (error) {
        observer_.onTerminated(*this, 503, element_->failureOf(error, route_).reason);
    } else {
        observer_.onTerminated(*this, 200, lastReason_);
    }
}

}  // namespace telephone::sip
