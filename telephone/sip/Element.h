// The stack's objects of one user agent, and what its requests have in common. Shared by the user agent and everything
// that it made, so that an object that outlives the user agent finds a closed element and not a dangling one. Used
// under the lock.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "telephone/sip/ConnectionLimits.h"
#include "telephone/sip/ForkedAnswers.h"
#include "telephone/sip/LineServers.h"
#include "telephone/sip/MediaClock.h"
#include "telephone/sip/MessageTap.h"
#include "telephone/sip/Servers.h"
#include "telephone/sip/Stack.h"
#include "telephone/sip/TlsTransport.h"
#include "telephone/sip/UserAgent.h"

namespace telephone::sip {

class NotifierImpl;
class RegistrationImpl;

// Our capabilities.
constexpr char const* kAllow = "INVITE, ACK, BYE, CANCEL, OPTIONS, INFO, PRACK, UPDATE, REFER, NOTIFY, SUBSCRIBE";
constexpr char const* kSdpType = "application/sdp";

// The addresses of an outgoing request.
struct Route
{
    std::string target;
    std::string fromUri;
    std::string fromName;  // escaped for a quoted string
    std::string contactUser;
    std::string contactParameters = {};  // ";name=value"
    std::vector<std::string> proxies;    // those that it passes, in order
    std::string host;                    // where the request goes
    sip_transp transport = SIP_TRANSP_UDP;

    sa local{};  // our address of the family in which the target is reached

    char const* fromNameOrNull() const { return fromName.empty() ? nullptr : fromName.c_str(); }
    // For the functions of the stack, which take pointers; valid as long as the route.
    std::vector<char const*> proxyTexts() const;
};

sip_transp stackTransport(Transport transport);

class Element : public std::enable_shared_from_this<Element>
{
public:
    Element(EventLoop& loop, UserAgentConfig config);

    // Binds the ports; throws std::runtime_error, naming the port and the error.
    void open();
    // Listens for calls and subscriptions; the receiver is the argument of the handlers. Throws std::runtime_error.
    void listen(sipsess_conn_h* invited, sip_msg_h* subscribed, void* receiver);
    // Begins to close: waits for the answers to BYE, REGISTER and the like, for closingTime at most, and not at all for
    // a caller that holds the lock.
    void settle();
    // After settle(). The stack's last transactions may live for another half minute, and `receiver` with them.
    void close(std::shared_ptr<void> receiver);
    bool isClosed() const { return closed_; }

    // The target with the account's transport added and "localhost" resolved; with TLS this begins to use it.
    // kBadInput: not a SIP URI. kNotFound, kUnavailable: without a proxy, one whose host is known not to be reachable.
    // kUnavailable, kNotSupported: TLS, which cannot be used.
    [[nodiscard]] Outcome<Route> routeTo(Account const& account, std::string const& target);
    // As routeTo, for a request that is not a registration. kUnavailable: lines cannot register with that host, because
    // TLS with it fails.
    [[nodiscard]] Outcome<Route> usableRouteTo(Account const& account, std::string const& target);
    // The proxies that the registrar named for the requests of an account (RFC 3608); none: no Service-Route.
    void setServiceRoute(Account const& account, std::vector<std::string> const& proxies);
    // What an error of the stack means for a request on that route: 408 without an answer, kTlsFailed with the reason
    // if TLS with the host failed, else 503.
    Response failureOf(int error, Route const& route) const;
    // Success for 0, else kUnavailable with the reason, or kNotPermitted if TLS with the host failed.
    [[nodiscard]] Outcome<> sentTo(Route const& route, int error, std::string const& what) const;
    // local: one of our addresses, without its port.
    std::string hostPort(sa const& local, sip_transp transport) const;
    // The user of our Contact in answers to this request.
    std::string contactUserFor(sip_msg const& request) const;
    // Answers a request that nothing else will answer.
    void answer(sip_msg const& request, std::uint16_t status, char const* reason, Headers const& headers = {},
                Content const& content = {}) const;
    // The same without a transaction: a retransmission is a new request (RFC 3261 section 8.2.7). For refusals.
    void answerAndForget(sip_msg const& request, std::uint16_t status, char const* reason,
                         Headers const& headers = {}) const;
    void log(LogLevel level, std::string const& line) const;
    // For refusals that reach no caller.
    void logRefusal(Outcome<> const& result) const;

    // Our capabilities, as headers: Allow and Supported.
    Headers capabilities() const;
    // Whether we know an extension that a request may require.
    bool supports(std::string_view extension) const;

    // Sessions hold this for as long as they exist, ended or not.
    std::shared_ptr<void const> sessionToken() const { return sessionToken_; }

    EventLoop& loop() const { return loop_; }
    UserAgentConfig const& config() const { return config_; }
    MediaClock& clock() { return clock_; }
    MessageTap& tap() { return *tap_; }
    LineServers& lineServers() { return lineServers_; }
    ForkedAnswers& forkedAnswers() { return forkedAnswers_; }
    // Those that have accepted their subscription, for the receiver.
    std::set<NotifierImpl*>& notifiers() { return notifiers_; }
    // All there are: told of connections that have ended.
    std::set<RegistrationImpl*>& registrations() { return registrations_; }
    // Null before the first use of TLS.
    TlsTransport* tls() const { return tls_.get(); }
    // Why registrations with a host fail for want of TLS, while they do.
    std::map<std::string, std::string>& distrusted() { return distrusted_; }
    // The first of our addresses; the one of that family, or the first if we have none.
    sa const& address() const { return addresses_.front(); }
    sa const& addressOf(int family) const;
    std::uint16_t port(sip_transp transport) const;
    ::sip* stack() const { return stack_; }
    sipsess_sock* sessionSocket() const { return sessionSocket_.get(); }
    sipevent_sock* eventSocket() const { return eventSocket_.get(); }

private:
    void findServers();
    [[nodiscard]] Outcome<> checkReachable(sa const& address) const;
    [[nodiscard]] Outcome<> checkReachable(Uri const& uri) const;
    // The family in which a target is reached, as far as that is known.
    [[nodiscard]] int familyOf(Uri const& uri) const;
    // context: of TLS.
    int bind(sip_transp transport, sa const& local, std::uint16_t& port, ::tls* context = nullptr);
    void bindUdp();
    void bindTcp();
    Outcome<Route> route(Account const& account, std::string const& target, std::vector<std::string> proxies);
    Outcome<> openTls();
    void onConnectionEnded(std::string const& host, SocketAddress const& peer);
    void onTrace(bool sent, sip_transp transport, sa const& from, sa const& to, std::uint8_t const* packet,
                 std::size_t size);

    EventLoop& loop_;
    UserAgentConfig config_;
    MediaClock clock_;
    std::shared_ptr<MessageTap> tap_;
    LineServers lineServers_;
    ConnectionLimits connectionLimits_;
    ForkedAnswers forkedAnswers_{*this};
    std::set<NotifierImpl*> notifiers_;
    std::set<RegistrationImpl*> registrations_;
    std::map<std::string, std::string> distrusted_;
    std::map<std::string, std::vector<std::string>> serviceRoutes_;  // by address of record
    std::shared_ptr<void const> sessionToken_ = std::make_shared<char>();
    std::vector<sa> addresses_ = std::vector<sa>(1);  // one of each family, without ports
    std::uint16_t udpPort_ = 0;
    std::uint16_t tcpPort_ = 0;
    std::uint16_t tlsPort_ = 0;
    bool closed_ = false;
    std::string tagSecret_;
    ::sip* stack_ = nullptr;
    std::shared_ptr<TlsTransport> tls_;
    std::unique_ptr<Servers> servers_;  // null: names cannot be looked up
    Ref<sipsess_sock> sessionSocket_;
    Ref<sipevent_sock> eventSocket_;
};

// Throws std::runtime_error, "<what>: <error text>", for an error of errno.
void throwOnError(int error, std::string const& what);

}  // namespace telephone::sip
