#include "SubscriptionImpl.h"

#include "EventLoop.h"

#include <mutex>

namespace telephone::sip {

namespace {

// "terminated;reason=timeout;..." : the value of a parameter, empty without one.
std::string parameterOf(const std::string& value, const char* name)
{
    const pl whole = slice(value);
    pl found{};
    return msg_param_decode(&whole, name, &found) == 0 ? text(found) : std::string();
}

SubscriptionState stateOf(const std::string& value)
{
    const std::string state = value.substr(0, value.find_first_of("; "));
    if (equalsIgnoringCase(state, "terminated"))
        return SubscriptionState::kTerminated;
    return equalsIgnoringCase(state, "pending") ? SubscriptionState::kPending : SubscriptionState::kActive;
}

}  // namespace

Notification readNotification(const sip_msg& notify)
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

SubscriptionImpl::SubscriptionImpl(std::shared_ptr<UserAgent::Impl> agent, SubscriptionRequest request,
                                   SubscriptionObserver& observer)
    : agent_(std::move(agent))
    , request_(std::move(request))
    , observer_(observer)
{}

SubscriptionImpl::~SubscriptionImpl()
{
    std::lock_guard guard(agent_->loop);
    subscription_.reset();
    credentials_.reset();
}

int SubscriptionImpl::start(const Account& account, const Route& route)
{
    makeCredentials(credentials_, account.authUser.empty() ? account.user : account.authUser, account.password);
    Headers headers = request_.headers;
    if (!request_.accept.empty())
        headers.add("Accept", request_.accept);
    const auto notified = [](::sip*, const sip_msg* message, void* subscription) {
        static_cast<SubscriptionImpl*>(subscription)->onNotify(*message);
    };
    const auto closed = [](int error, const sip_msg* message, const sipevent_substate*, void* subscription) {
        static_cast<SubscriptionImpl*>(subscription)->onClose(error, message);
    };
    const char* proxies[] = {route.proxy.c_str()};
    return sipevent_subscribe(subscription_.out(), agent_->eventSocket.get(), route.target.c_str(),
                              route.fromName.empty() ? nullptr : route.fromName.c_str(), route.fromUri.c_str(),
                              request_.event.c_str(), request_.eventId.empty() ? nullptr : request_.eventId.c_str(),
                              request_.expires, route.contactUser.c_str(), proxies, route.proxy.empty() ? 0 : 1,
                              answerChallenge, credentials_.get(), true, nullptr, notified, closed, this, "%s",
                              headers.format().c_str());
}

void SubscriptionImpl::onNotify(const sip_msg& message)
{
    (void)sip_treply(nullptr, agent_->stack, &message, 200, "OK");
    const Notification notification = readNotification(message);
    lastReason_ = notification.reason;
    observer_.onNotify(*this, notification);
}

void SubscriptionImpl::onClose(int error, const sip_msg* message)
{
    if (error == ETIMEDOUT)
        observer_.onTerminated(*this, 408, "Request Timeout");
    else if (message && !message->req && message->scode >= 300)
        observer_.onTerminated(*this, message->scode, text(message->reason));
    else if (error)
        observer_.onTerminated(*this, 503, errorText(error));
    else
        observer_.onTerminated(*this, 200, lastReason_);
}

}  // namespace telephone::sip
