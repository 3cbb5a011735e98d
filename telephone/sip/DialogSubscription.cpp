#include "telephone/sip/DialogSubscription.h"

#include <mutex>
#include <utility>

#include "telephone/sip/EventLoop.h"
#include "telephone/sip/UserAgent.h"

namespace telephone::sip {

DialogSubscription::DialogSubscription(UserAgent& agent, Changed changed, Ended ended)
    : agent_(agent)
    , changed_(std::move(changed))
    , ended_(std::move(ended))
{}

Outcome<std::unique_ptr<DialogSubscription>> DialogSubscription::start(UserAgent& agent, Account const& account,
                                                                       std::string const& target, Changed changed,
                                                                       Ended ended, std::uint32_t expires)
{
    SubscriptionRequest request;
    request.target = target;
    request.event = kDialogEvent;
    request.accept = kDialogInfoType;
    request.expires = expires;
    std::unique_ptr<DialogSubscription> started(new DialogSubscription(agent, std::move(changed), std::move(ended)));
    std::lock_guard const guard(agent.loop());
    auto subscription = agent.subscribe(account, request, *started);
    if (!subscription) {
        return tl::unexpected(subscription.error());
    }
    started->subscription_ = std::move(*subscription);
    return started;
}

void DialogSubscription::onNotify(Subscription& subscription, Notification const& notification)
{
    // The first NOTIFY may say no more than that the subscription is pending.
    if (notification.content.body.empty()) {
        return;
    }
    std::string const& target = subscription.request().target;
    switch (list_.take(notification.content.body)) {
    case DialogList::Result::kTaken: {
        auto const changed = changed_;  // may destroy this
        return changed(dialogs());
    }
    case DialogList::Result::kOutdated:
        return agent_.log(LogLevel::kInfo, "Dialogs of " + target + ": an outdated document is ignored");
    case DialogList::Result::kMalformed:
        return agent_.log(LogLevel::kWarning, "Dialogs of " + target + ": a malformed document is ignored");
    }
}

void DialogSubscription::onTerminated(Subscription& /*subscription*/, int status, std::string const& reason)
{
    auto const ended = ended_;  // may destroy this
    ended(status, reason);
}

}  // namespace telephone::sip
