#include "telephone/sip/SubscriptionImpl.h"

#include <mutex>

#include "telephone/sip/EventLoop.h"

namespace telephone::sip {

namespace {

// The value of a parameter of "terminated;reason=timeout;..."; empty without it.
std::string parameterOf(std::string const& value, char const* name)
{
    const pl whole = slice(value);
    pl found{};
    return msg_param_decode(&whole, name, &found) == 0 ? text(found) : std::string();
}

SubscriptionState stateOf(std::string const& value)
{
    const std::string state = value.substr(0, value.find_first_of("; "));
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
    const std::string state = notification.headers.value("Subscription-State");
    notification.state = stateOf(state);
    notification.reason = parameterOf(state, "reason");
    const std::string event = notification.headers.value("Event");
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
    auto const route = element_->routeTo(account, request_.target);
    if (!route) {
        return tl::unexpected(route.error());
    }
    makeCredentials(credentials_, account);
    Headers headers = request_.headers;
    if (!request_.accept.empty()) {
        headers.add("Accept", request_.accept);
    }
    auto const notified = [](::sip*, sip_msg const* message, void* subscription) {
        static_cast<SubscriptionImpl*>(subscription)->onNotify(*message);
    };
    auto const closed = [](int error, sip_msg const* message, sipevent_substate const*, void* subscription) {
        static_cast<SubscriptionImpl*>(subscription)->onClose(error, message);
    };
    char const* proxies[] = {route->proxy.c_str()};
    int const error = sipevent_subscribe(
        subscription_.out(), element_->eventSocket(), route->target.c_str(), route->fromNameOrNull(),
        route->fromUri.c_str(), request_.event.c_str(), request_.eventId.empty() ? nullptr : request_.eventId.c_str(),
        request_.expires, route->contactUser.c_str(), proxies, route->proxyCount(), answerChallenge, credentials_.get(),
        true, nullptr, notified, closed, this, "%s", headers.format().c_str());
    return sent(error, "SUBSCRIBE to " + request_.target);
}

void SubscriptionImpl::onNotify(sip_msg const& message)
{
    element_->answer(message, 200, "OK");
    const Notification notification = readNotification(message);
    lastReason_ = notification.reason;
    observer_.onNotify(*this, notification);
}

void SubscriptionImpl::onClose(int error, sip_msg const* message)
{
    if (error == ETIMEDOUT) {
        observer_.onTerminated(*this, 408, "Request Timeout");
    } else if (message && !message->req && message->scode >= 300) {
        observer_.onTerminated(*this, message->scode, text(message->reason));
    } else if (error) {
        observer_.onTerminated(*this, 503, errorText(error));
    } else {
        observer_.onTerminated(*this, 200, lastReason_);
    }
}

}  // namespace telephone::sip
