// A SIP user agent on its own address: a telephone, or an exchange. Several may share one event loop. It listens on UDP
// and TCP, and on TLS where it is configured, passes incoming requests to its observer, and makes outgoing sessions,
// registrations, subscriptions and requests.
//
// It answers by itself: OPTIONS (200, or 404 for an unknown user), unsupported extensions in Require (420), unknown
// methods (405), unsolicited NOTIFY (200), retransmissions and CANCEL. Packets that are not SIP are dropped.
//
// Destroy it while the loop runs, after all sessions, registrations, subscriptions and notifiers that it made. The
// destructor waits briefly for the answers to BYE, REGISTER and the like. Operations may be called on any thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/sip/Account.h"
#include "telephone/sip/Audio.h"
#include "telephone/sip/Log.h"
#include "telephone/sip/Message.h"
#include "telephone/sip/Permissions.h"
#include "telephone/sip/Registration.h"
#include "telephone/sip/RequestLimits.h"
#include "telephone/sip/Session.h"
#include "telephone/sip/Subscription.h"
#include "telephone/sip/TlsConfig.h"
#include "telephone/sip/Transfer.h"

namespace telephone::sip {

class Dns;
class Element;
class EventLoop;
class Receiver;

// Whether responses before the answer are reliable (RFC 3262).
enum class ReliableUse : int
{
    kNone,       // never
    kSupported,  // those with a session description, and others where a call demands it
    kRequired,   // all; calls of those who do not support it are refused (421)
};

struct UserAgentConfig
{
    std::string address = "127.0.0.1";                // IP address, or network interface: one of each family
    std::uint16_t udpPort = 0;                        // 0: chosen
    std::uint16_t tcpPort = 0;                        // 0: the UDP port where it is free, else chosen
    std::uint16_t tlsPort = 0;                        // 0: chosen
    std::optional<TlsConfig> tls;                     // none: no TLS
    bool tlsFromTheStart = false;                     // otherwise from the first use, to save the memory
    std::string name = "telephone";                   // User-Agent and Server
    std::vector<std::string> codecs{"PCMU", "PCMA"};  // in the order of preference
    bool telephoneEvents = true;                      // offer RFC 4733
    std::string instance;                             // URN of the device in registrations (RFC 5626); may be empty
    std::chrono::seconds sessionExpires{1800};        // interval of session timers (RFC 4028), 90 or more; 0: none
    ReliableUse reliableResponses = ReliableUse::kSupported;
    std::chrono::seconds audioTimeout{0};        // without audio, an established call ends; 0: never
    std::vector<std::string> dnsServers;         // "address" or "address:port"; empty: the system's
    std::shared_ptr<Dns> dns;                    // null: asks those servers, and in virtual time nobody
    Encryption encryption = Encryption::kNone;   // of the audio
    bool keysWithoutTls = false;                 // its keys may travel in messages that others can read
    std::chrono::milliseconds closingTime{500};  // longest wait of the destructor
    Limits limits;                               // of requests that are taken in; none
    Logger log;
    bool isTraced = false;                // its messages are steps of the trace
    std::function<bool()> traceMessages;  // asked for each message: whether to log it, at kDebug; null: never
};

// Called on the loop's thread with the lock held.
class UserAgentObserver
{
public:
    virtual ~UserAgentObserver() = default;

    // Whether this user agent serves the user of a Request-URI; if not, INVITE, SUBSCRIBE and OPTIONS are answered with
    // 404.
    virtual bool knowsUser(std::string const& /*user*/) { return true; }
    // What the user's line and its settings say about permissions. Nothing: everybody may send everything to it.
    virtual std::optional<GuardedUser> guardedUser(std::string const& /*user*/) { return std::nullopt; }
    // An incoming call; 100 Trying is sent. Set the session's observer and ring, answer, reject or redirect it, now or
    // later. Dropping the session refuses the call (480).
    virtual void onIncomingCall(std::unique_ptr<Session>) {}
    // REFER outside a dialog. Dropping the transfer refuses it (603).
    virtual void onTransferRequested(std::unique_ptr<Transfer>) {}
    // The first SUBSCRIBE of a subscription. Dropping the notifier refuses it (489).
    virtual void onSubscribe(std::unique_ptr<Notifier>) {}
    // NOTIFY without a subscription, already answered with 200.
    virtual void onUnsolicitedNotify(NameAddr const& /*from*/, NameAddr const& /*to*/, Notification const&) {}
    // Any other request outside a dialog (REGISTER, INFO, MESSAGE ...). An observer that moves it out must answer it;
    // one left in place is refused with 405.
    virtual void onRequest(std::unique_ptr<IncomingRequest>&) {}
};

struct CallRequest
{
    Account account;
    std::string target;                // URI
    std::optional<Replaces> replaces;  // for a pick-up or an attended transfer
    std::string referredBy;            // Referred-By value; empty: none
    Headers headers;                   // further ones: Diversion, Call-Info, Answer-Mode, P-Asserted-Identity ...
    Direction direction = Direction::kSendReceive;
};

class UserAgent
{
public:
    // Binds its ports; throws std::runtime_error if it cannot, naming the port and the error. The observer must outlive
    // the user agent.
    UserAgent(EventLoop& loop, UserAgentConfig config, UserAgentObserver& observer);
    ~UserAgent();
    UserAgent(UserAgent const&) = delete;
    UserAgent& operator=(UserAgent const&) = delete;

    EventLoop& loop() const;
    std::string address() const;  // the first, numeric
    std::uint16_t udpPort() const;
    std::uint16_t tcpPort() const;
    std::uint16_t tlsPort() const;  // 0 before the first use of TLS
    // "address:port", the domain of its users.
    std::string hostPort(Transport transport = Transport::kUdp) const;

    // Sends an INVITE or a SUBSCRIBE; what follows comes to the observer, never from within the call. kBadInput: the
    // target is not a SIP URI. kUnavailable: the stack cannot send, or lines cannot register with the host because TLS
    // with it fails. kNotSupported: TLS, without any. A host name that DNS does not know is refused with kNotFound if
    // that is known already, and ends the call or the subscription if not.
    [[nodiscard]] Outcome<std::unique_ptr<Session>> call(CallRequest const& request, SessionObserver& observer);
    [[nodiscard]] Outcome<std::unique_ptr<Subscription>>
    subscribe(Account const& account, SubscriptionRequest const& request, SubscriptionObserver& observer);

    // Starts to register; the observer receives the results.
    std::unique_ptr<Registration> registerAccount(Account const& account, RegistrationObserver& observer);

    // Sends a request outside a dialog (MESSAGE, INFO, OPTIONS ...) and answers challenges. Refuses as call() does. The
    // handler is called once, never from within this call and never after the user agent is destroyed; it may be empty.
    [[nodiscard]] Outcome<> request(Account const& account, std::string const& method, std::string const& target,
                                    Headers const& headers, Content const& content, ResponseHandler done);

    // Sends these bytes, whatever they are, over UDP to the host and port of a SIP URI. kBadInput: not a SIP URI with a
    // numeric host; kUnavailable: they cannot be sent.
    [[nodiscard]] Outcome<> sendDatagram(std::string const& target, std::string_view bytes) const;

    // Writes to the log of the configuration.
    void log(LogLevel level, std::string const& line) const;

private:
    std::shared_ptr<Element> element_;
    std::shared_ptr<Receiver> receiver_;
};

}  // namespace telephone::sip
