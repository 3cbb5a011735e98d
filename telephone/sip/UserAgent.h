// One SIP element on its own addresses: a telephone, or an exchange. Several may live on one event loop. It listens on
// UDP and TCP, hands every request that comes to its observer, and makes the sessions, registrations, subscriptions and
// requests that go out.
//
// Answered by itself: OPTIONS (200, or 404 for a user that is not known), a Require it does not support (420), methods
// it does not have (405), unsolicited NOTIFY (200), retransmissions, CANCEL, and whatever is no SIP (dropped).
//
// Owner: whoever made it; destroyed with all sessions, registrations, subscriptions and notifiers it gave out gone
// before, and while the loop still runs. Destruction waits a short while for BYE, REGISTER and the like to be answered.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "telephone/sip/Account.h"
#include "telephone/sip/Audio.h"
#include "telephone/sip/Log.h"
#include "telephone/sip/Message.h"
#include "telephone/sip/Registration.h"
#include "telephone/sip/Session.h"
#include "telephone/sip/Subscription.h"
#include "telephone/sip/Transfer.h"

namespace telephone::sip {

class EventLoop;

struct UserAgentConfig
{
    std::string address = "127.0.0.1";                // numeric
    std::uint16_t udpPort = 0;                        // 0: chosen
    std::uint16_t tcpPort = 0;                        // 0: the UDP port where it is free, else chosen
    std::string name = "telephone";                   // User-Agent and Server
    std::vector<std::string> codecs{"PCMU", "PCMA"};  // in the order of preference
    bool telephoneEvents = true;                      // offer RFC 4733
    std::chrono::milliseconds closingTime{500};       // how long destruction waits at most
    Logger log;
    std::function<bool()> traceMessages;  // asked for each message: whether to log it, at kDebug; null: never
};

// Called on the loop's thread with the lock held.
class UserAgentObserver
{
public:
    virtual ~UserAgentObserver() = default;

    // Whether the user of a Request-URI lives here; if not, INVITE, SUBSCRIBE and OPTIONS are answered with 404.
    virtual bool knowsUser(std::string const& /*user*/) { return true; }
    // A call comes in; "100 Trying" is sent. Set the session's observer and ring, answer, reject or redirect it, now or
    // later. Not keeping it refuses it (480).
    virtual void onIncomingCall(std::unique_ptr<Session>) {}
    // REFER outside a dialog. Not keeping it refuses it.
    virtual void onTransferRequested(std::unique_ptr<Transfer>) {}
    // A first SUBSCRIBE. Not keeping it refuses it (489).
    virtual void onSubscribe(std::unique_ptr<Notifier>) {}
    // NOTIFY without a subscription; already answered with 200. from: URI of the sender; to: URI it names.
    virtual void onUnsolicitedNotify(NameAddr const& /*from*/, NameAddr const& /*to*/, Notification const&) {}
    // Any other request outside a dialog (REGISTER, INFO, MESSAGE ...). Leaving it in place refuses it with 405; taking
    // it promises an answer.
    virtual void onRequest(std::unique_ptr<IncomingRequest>&) {}
};

struct CallRequest
{
    Account account;
    std::string target;                // URI
    std::optional<Replaces> replaces;  // pick-up, or the far leg of an attended transfer
    std::string referredBy;            // Referred-By value; empty: none
    Headers headers;                   // more: Diversion, Call-Info, Answer-Mode, P-Asserted-Identity ...
    Direction direction = Direction::kSendReceive;
};

class UserAgent
{
public:
    // Binds its ports; throws std::runtime_error when it cannot, saying which and why. The observer outlives it.
    UserAgent(EventLoop& loop, UserAgentConfig config, UserAgentObserver& observer);
    ~UserAgent();
    UserAgent(UserAgent const&) = delete;
    UserAgent& operator=(UserAgent const&) = delete;

    EventLoop& loop() const;
    std::string address() const;
    std::uint16_t udpPort() const;
    std::uint16_t tcpPort() const;
    // "address:port", the domain that its own users have.
    std::string hostPort(Transport transport = Transport::kUdp) const;

    // Each returns null when nothing could be sent, and says why in the log and, where given, in whyNot.
    std::unique_ptr<Session> call(CallRequest const& request, SessionObserver& observer, std::string* whyNot = nullptr);
    std::unique_ptr<Subscription> subscribe(Account const& account, SubscriptionRequest const& request,
                                            SubscriptionObserver& observer, std::string* whyNot = nullptr);

    // Begins to register; how it goes comes to the observer.
    std::unique_ptr<Registration> registerAccount(Account const& account, RegistrationObserver& observer);

    // One request outside every dialog: MESSAGE, INFO, OPTIONS ... Challenges are answered. The handler is called once,
    // never from within this call; not any more once the user agent is destroyed.
    bool request(Account const& account, std::string const& method, std::string const& target, Headers const& headers,
                 Content const& content, ResponseHandler done);

    struct Impl;

private:
    std::shared_ptr<Impl> impl_;
};

}  // namespace telephone::sip
