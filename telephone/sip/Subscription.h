// Event packages (RFC 6665): Subscription is our end of one that we asked for, Notifier our end of one that somebody
// else asks of us. Packages are only names here: "message-summary", "dialog", "presence" ...
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "telephone/sip/Message.h"

namespace telephone::sip {

struct Account;
class Subscription;

enum class SubscriptionState : int
{
    kPending,
    kActive,
    kTerminated
};

struct Notification
{
    SubscriptionState state = SubscriptionState::kActive;
    std::string reason;  // of a terminated one: "noresource", "timeout", "deactivated" ...
    std::string event;   // name of the package
    Content content;
    Headers headers;
};

// Called on the loop's thread with the lock held; may destroy the subscription.
class SubscriptionObserver
{
public:
    virtual ~SubscriptionObserver() = default;
    virtual void onNotify(Subscription& subscription, Notification const& notification) = 0;
    // It is over and does nothing any more: refused (its status), silent (408), or ended by the notifier (status 200
    // and its reason). Refreshing while it lives is done by itself.
    virtual void onTerminated(Subscription& subscription, int status, std::string const& reason) = 0;
};

struct SubscriptionRequest
{
    std::string target;   // URI
    std::string event;    // package
    std::string eventId;  // id parameter; empty: none
    std::string accept;   // Accept header; empty: none
    std::uint32_t expires = 3600;
    Headers headers;
};

class Subscription
{
public:
    virtual ~Subscription() = default;  // unsubscribes

    virtual SubscriptionRequest const& request() const = 0;
};

// Comes with UserAgentObserver::onSubscribe. Answered once with accept or reject; one destroyed unanswered is refused
// with 489, one destroyed while active sends a last NOTIFY "terminated;reason=deactivated". RFC 6665 wants a notify()
// right after accept(), with the state as it is.
class Notifier
{
public:
    virtual ~Notifier() = default;

    virtual std::string const& event() const = 0;
    virtual std::string requestUri() const = 0;
    virtual NameAddr from() const = 0;
    virtual NameAddr to() const = 0;
    virtual Headers const& headers() const = 0;
    virtual std::uint32_t expires() const = 0;  // asked for; 0: one look at the state

    // contentType: of the bodies that notify() will send.
    virtual bool accept(std::string const& contentType) = 0;
    virtual bool reject(int status, std::string const& reason, Headers const& headers = {}) = 0;
    virtual bool notify(std::string const& body, SubscriptionState state = SubscriptionState::kActive,
                        std::string const& reason = "noresource") = 0;
    virtual bool isActive() const = 0;
    // The subscriber let it end or is gone. Called once, on the loop's thread; may destroy the notifier.
    virtual void onClosed(std::function<void(Notifier&)> closed) = 0;
};

}  // namespace telephone::sip
