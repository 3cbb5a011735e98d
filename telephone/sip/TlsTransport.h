// TLS of one user agent. The stack makes the connections but checks nobody's certificate, and does not tell whom it
// connects to. So this class notes the host whose message opens a connection (the name before it was resolved, RFC 5922
// section 7.3), checks the far end's certificate for it, and keeps the reason where that fails. No byte of SIP is sent
// then. A connection carries messages for another host only if its certificate is for that one, too.
//
// Made by Element with the first use of TLS. Lives as long as its last connection. Used under the loop's lock.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "telephone/base/Refusal.h"
#include "telephone/sip/MemoryNetwork.h"
#include "telephone/sip/Stack.h"
#include "telephone/sip/TlsConfig.h"

struct ssl_st;
struct x509_store_ctx_st;

namespace telephone::sip {

class TlsTransport : public std::enable_shared_from_this<TlsTransport>
{
public:
    // Called on the loop's thread, in the middle of the stack's work.
    struct Handlers
    {
        std::function<void(std::string const& host, std::string const& reason)> failed;
        // A connection that was made here, and whose handshake was complete.
        std::function<void(std::string const& host, SocketAddress const& peer)> ended;
    };

    // For a stack, which it adds no transport to. Refused if a file cannot be used; the reason names it.
    [[nodiscard]] static Outcome<std::shared_ptr<TlsTransport>> make(::sip const& stack, TlsConfig config,
                                                                     Handlers handlers);
    TlsTransport(::sip const& stack, TlsConfig config, Handlers handlers);
    ~TlsTransport();
    TlsTransport(TlsTransport const&) = delete;
    TlsTransport& operator=(TlsTransport const&) = delete;

    tls* context() const { return context_.get(); }
    // Calls no handler any more.
    void close() { handlers_ = {}; }

    // Why the last connection to the host failed; empty if it did not.
    std::string failureOf(std::string const& host) const;
    bool showsCertificate() const { return !config_.certificate.empty(); }

    // A server that a line registers with. It may name itself by its address: the connection that was verified for its
    // name carries requests for that address as well, as other connections do only within dialogs.
    void addServer(std::string const& host) { servers_.insert(host); }

    // A client that listens at the address is reached over the connection that it has opened, as long as that lasts.
    void addClient(sa const& listening, sa const& from) { clients_.insert_or_assign(SocketAddress(listening), from); }

    // The stack has made a connection; an error number ends it.
    static int begin(tls const& context, tls_conn& connection, tcp_conn const& socket);

private:
    friend int sendOverTls(::sip const*, sa const&, mbuf const&, bool, std::function<int(sa const&)> const&);
    struct Connection;

    Outcome<> open();
    Outcome<> useOwnCertificate();
    static TlsTransport* of(::sip const* stack);
    sa const* clientAt(SocketAddress const& place) const;
    int prepare(sa const& to, mbuf const& message, bool hasConnection);
    int begin(ssl_st& ssl, tcp_conn const& socket);
    int trustAuthorities(Connection const& connection, ssl_st& ssl);
    bool mayCarry(Connection const& connection, std::string const& host, bool isInDialog) const;
    void fail(std::string const& host, std::string const& reason);
    void onProgress(Connection& connection, int where, int value);
    static int verify(x509_store_ctx_st* verification, void* transport);

    ::sip const& stack_;
    TlsConfig config_;
    Handlers handlers_;
    Ref<tls> context_;
    std::string target_;  // host of the message that is being sent
    SocketAddress targetAddress_{sa{}};
    std::map<SocketAddress, Connection*> connections_;  // owned by the library's connections
    std::map<SocketAddress, sa> clients_;               // by where they listen; with a connection
    std::map<std::string, std::string> failures_;       // by host
    std::set<std::string> servers_;
};

// Sends a message of a stack by `send`, to that address or to where its client has connected from, or returns EPROTO if
// the present connection to the address is not for the host of the message. hasConnection: it is an answer, for the
// connection on which its request came.
int sendOverTls(::sip const* stack, sa const& to, mbuf const& message, bool hasConnection,
                std::function<int(sa const& to)> const& send);

// A route in the form that the stack can send to, which knows no sips: as sip: over TLS. Others are unchanged.
class SendableRoute
{
public:
    explicit SendableRoute(uri const& route);
    uri const* get() const { return &route_; }

private:
    uri route_;
    std::string parameters_;
};

}  // namespace telephone::sip
