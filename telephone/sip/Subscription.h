// Event packages (RFC 6665). A Subscription is one that we requested, a Notifier one that the far end requested. The
// name of the package is all that this code knows of it: "message-summary", "dialog", "presence" ...
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "telephone/base/Refusal.h"
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
    std::string reason;  // of kTerminated: "noresource", "timeout", "deactivated" ...
    std::string event;   // name of the package
    Content content;
    Headers headers;
};

// Called on the loop's thread with the lock held. May destroy the subscription.
class SubscriptionObserver
{
public:
    virtual ~SubscriptionObserver() = default;
    virtual void onNotify(Subscription& subscription, Notification const& notification) = 0;
    // The subscription is over: refused (status of the refusal), without an answer (408), not reachable (503), or ended
    // by the notifier (200 and its reason). Until then it is refreshed automatically.
    virtual void onTerminated(Subscription& subscription, int status, std::string const& reason) = 0;
};

struct SubscriptionRequest
{
    std::string target;  // URI
    std::string event;   // package
    std::string accept;  // Accept header; empty: none
    std::uint32_t expires = 3600;
};

class Subscription
{
public:
    virtual ~Subscription() = default;  // unsubscribes

    virtual SubscriptionRequest const& request() const = 0;
};

// Delivered by UserAgentObserver::onSubscribe. A notifier destroyed unanswered is rejected with 489; one destroyed
// while active sends a last NOTIFY, "terminated;reason=deactivated". RFC 6665 requires a notify() with the present
// state right after accept().
class Notifier
{
public:
    virtual ~Notifier() = default;

    virtual std::string const& event() const = 0;
    virtual std::string requestUri() const = 0;
    virtual Headers const& headers() const = 0;

    // contentType: of the bodies that notify() will send. kWrongState: already answered; kUnavailable: the stack cannot
    // send.
    [[nodiscard]] virtual Outcome<> accept(std::string const& contentType) = 0;
    // 300 to 699. Ignored, and logged, once the subscription is answered.
    virtual void reject(int status, std::string const& reason, Headers const& headers = {}) = 0;
    // Ignored unless the subscription is active.
    virtual void notify(std::string const& body, SubscriptionState state = SubscriptionState::kActive,
                        std::string const& reason = "noresource") = 0;
    virtual bool isActive() const = 0;
    // The stack answers a refresh, and an unsubscription, with a NOTIFY of its own. `body` makes the body: the present
    // state. Without it the last body is repeated, which a package whose documents have versions forbids. Called on the
    // loop's thread with the lock held; it must not destroy a notifier.
    virtual void onRefreshed(std::function<std::string()> body) = 0;
    // Calls `closed` once when the subscriber unsubscribes, does not refresh in time or cannot be reached: on the
    // loop's thread with the lock held. It may destroy the notifier.
    virtual void onClosed(std::function<void(Notifier&)> closed) = 0;
};

}  // namespace telephone::sip
