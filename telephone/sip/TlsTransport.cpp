#include "telephone/sip/TlsTransport.h"

#include <algorithm>
#include <array>
#include <cstring>

#include <openssl/err.h>
#include <openssl/ssl.h>

#include "telephone/sip/Certificate.h"

namespace telephone::sip {

namespace {

std::map<::sip const*, TlsTransport*>& transports()
{
    static auto& all = *new std::map<::sip const*, TlsTransport*>;  // never destroyed: connections end late
    return all;
}

std::string errorOfLibrary()
{
    auto const error = ERR_peek_error();
    char const* const reason =
        ERR_SYSTEM_ERROR(error) ? std::strerror(ERR_GET_REASON(error)) : ERR_reason_error_string(error);
    ERR_clear_error();
    return reason == nullptr ? "it is unusable" : reason;
}

bool isAddress(std::string const& host)
{
    sa address{};
    return sa_set_str(&address, host.c_str(), 0) == 0;
}

struct Hop
{
    std::string host;
    bool isInDialog = false;  // of a request
};

// What a message is meant for: of a request the host that of its first Route or of its address, of a response that of
// the Via. "maddr" stands in its place where there is one, as the stack has it.
Hop nextHopOf(mbuf const& message)
{
    Ref<mbuf> copy;
    Ref<sip_msg> decoded;
    std::string_view const bytes(reinterpret_cast<char const*>(mbuf_buf(&message)), mbuf_get_left(&message));
    if (!fill(copy, bytes) || sip_msg_decode(decoded.out(), copy.get()) != 0) {
        return {};
    }
    sip_msg const& sent = *decoded.get();
    if (!sent.req) {
        std::array<char, 64> host{};
        bool const isNumeric = sa_ntop(&sent.via.addr, host.data(), static_cast<int>(host.size())) == 0;
        return {isNumeric ? host.data() : text(sent.via.sentby).substr(0, text(sent.via.sentby).find(':'))};
    }
    sip_hdr const* const route = sip_msg_hdr(&sent, SIP_HDR_ROUTE);
    sip_addr first{};
    uri const& hop = route != nullptr && sip_addr_decode(&first, &route->val) == 0 ? first.uri : sent.uri;
    pl instead{};
    bool const hasOther = msg_param_decode(&hop.params, "maddr", &instead) == 0;
    return {text(hasOther ? instead : hop.host), pl_isset(&sent.to.tag) != 0};
}

}  // namespace

// What is known of a connection; hangs on the library's object and ends with it.
struct TlsTransport::Connection
{
    std::shared_ptr<TlsTransport> transport;
    ssl_st& ssl;
    SocketAddress peer;
    std::string host;  // whom it was made for; of one that was accepted, the address
    bool outgoing = false;
    bool established = false;

    static int index()
    {
        static int const index = SSL_get_ex_new_index(0, nullptr, nullptr, nullptr,
                                                      [](void*, void* connection, CRYPTO_EX_DATA*, int, long, void*) {
                                                          delete static_cast<Connection*>(connection);
                                                      });
        return index;
    }
    static Connection& of(ssl_st const& ssl) { return *static_cast<Connection*>(SSL_get_ex_data(&ssl, index())); }

    ~Connection()
    {
        auto const found = transport->connections_.find(peer);
        if (found != transport->connections_.end() && found->second == this) {
            transport->connections_.erase(found);
            std::erase_if(transport->clients_,
                          [this](auto const& client) { return SocketAddress(client.second) == peer; });
        }
        bool const isIncomplete = outgoing && !established && SSL_in_before(&ssl) == 0;
        if (isIncomplete && transport->failureOf(host).empty()) {
            transport->fail(host, host + " does not complete the handshake of TLS");
        }
        if (outgoing && established && transport->handlers_.ended) {
            transport->handlers_.ended(host, peer);
        }
    }
};

Outcome<std::shared_ptr<TlsTransport>> TlsTransport::make(::sip const& stack, TlsConfig config, Handlers handlers)
{
    auto made = std::make_shared<TlsTransport>(stack, std::move(config), std::move(handlers));
    return made->open().map([&made] { return made; });
}

TlsTransport::TlsTransport(::sip const& stack, TlsConfig config, Handlers handlers)
    : stack_(stack)
    , config_(std::move(config))
    , handlers_(std::move(handlers))
{
    transports()[&stack_] = this;
}

TlsTransport::~TlsTransport()
{
    auto const found = transports().find(&stack_);
    if (found != transports().end() && found->second == this) {
        transports().erase(found);
    }
}

TlsTransport* TlsTransport::of(::sip const* stack)
{
    auto const found = transports().find(stack);
    return found == transports().end() ? nullptr : found->second;
}

Outcome<> TlsTransport::open()
{
    if (tls_alloc(context_.out(), TLS_METHOD_SSLV23, nullptr, nullptr) != 0) {
        return refuse(RefusalKind::kUnavailable, "TLS cannot be used: " + errorOfLibrary());
    }
    SSL_CTX* const context = tls_openssl_context(context_.get());
    SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION);
    // Each connection is verified for itself.
    SSL_CTX_set_session_cache_mode(context, SSL_SESS_CACHE_OFF);
    SSL_CTX_set_options(context, SSL_OP_NO_TICKET);
    SSL_CTX_set_verify(context, SSL_VERIFY_PEER, nullptr);
    SSL_CTX_set_cert_verify_callback(context, &TlsTransport::verify, this);
    SSL_CTX_set_info_callback(context, [](SSL const* ssl, int where, int value) {
        Connection& connection = Connection::of(*ssl);
        connection.transport->onProgress(connection, where, value);
    });
    return useOwnCertificate();
}

Outcome<> TlsTransport::useOwnCertificate()
{
    if (config_.certificate.empty()) {
        return {};
    }
    SSL_CTX* const context = tls_openssl_context(context_.get());
    ERR_clear_error();
    if (SSL_CTX_use_certificate_chain_file(context, config_.certificate.c_str()) != 1) {
        return refuse(RefusalKind::kBadInput,
                      "the certificate " + config_.certificate + " cannot be used: " + errorOfLibrary());
    }
    if (SSL_CTX_use_PrivateKey_file(context, config_.key.c_str(), SSL_FILETYPE_PEM) != 1) {
        return refuse(RefusalKind::kBadInput, "the key " + config_.key + " cannot be used for the certificate " +
                                                  config_.certificate + ": " + errorOfLibrary());
    }
    return {};
}

std::string TlsTransport::failureOf(std::string const& host) const
{
    auto const found = failures_.find(host);
    return found == failures_.end() ? std::string() : found->second;
}

void TlsTransport::fail(std::string const& host, std::string const& reason)
{
    failures_[host] = reason;
    if (handlers_.failed) {
        handlers_.failed(host, reason);
    }
}

int sendOverTls(::sip const* stack, sa const& to, mbuf const& message, bool hasConnection,
                std::function<int(sa const& to)> const& send)
{
    TlsTransport* const transport = TlsTransport::of(stack);
    if (transport == nullptr) {
        return send(to);
    }
    if (sa const* const client = hasConnection ? nullptr : transport->clientAt(SocketAddress(to))) {
        return send(*client);
    }
    if (int const error = transport->prepare(to, message, hasConnection)) {
        return error;
    }
    int const error = send(to);
    transport->target_.clear();
    return error;
}

SendableRoute::SendableRoute(uri const& route)
    : route_(route)
{
    if (view(route.scheme) == "sips") {
        // The first of two parameters counts.
        parameters_ = ";transport=tls" + text(route.params);
        route_.scheme = slice("sip");
        route_.params = slice(parameters_);
    }
}

// In a dialog, a client names itself by the address that it has connected from.
sa const* TlsTransport::clientAt(SocketAddress const& place) const
{
    auto const found = std::ranges::find_if(clients_, [&place](auto const& client) {
        return client.first == place || SocketAddress(client.second) == place;
    });
    return found == clients_.end() ? nullptr : &found->second;
}

int TlsTransport::prepare(sa const& to, mbuf const& message, bool hasConnection)
{
    auto const present = connections_.find(SocketAddress(to));
    bool const isOpen = present != connections_.end();
    if (isOpen && hasConnection) {
        return 0;
    }
    auto const [host, isInDialog] = nextHopOf(message);
    if (isOpen && !mayCarry(*present->second, host, isInDialog)) {
        X509 const* const certificate = SSL_get0_peer_certificate(&present->second->ssl);
        fail(host, certificate == nullptr ? "the connection to " + addressText(to) + " is for " +
                                                present->second->host + " and not for " + host
                                          : wrongNameText(host, *certificate));
        return EPROTO;
    }
    target_ = host;
    targetAddress_ = SocketAddress(to);
    return 0;
}

bool TlsTransport::mayCarry(Connection const& connection, std::string const& host, bool isInDialog) const
{
    if (connection.outgoing && connection.host == host) {
        return true;
    }
    X509 const* const certificate = SSL_get0_peer_certificate(&connection.ssl);
    return connection.established && certificate != nullptr &&
           (isFor(*certificate, host) || (isAddress(host) && (isInDialog || servers_.contains(connection.host))));
}

int TlsTransport::begin(tls const& context, tls_conn& connection, tcp_conn const& socket)
{
    // The library's object is the first member of the stack's.
    auto& ssl = **reinterpret_cast<ssl_st**>(&connection);
    for (auto const& [stack, transport] : transports()) {
        if (transport->context() == &context) {
            return transport->begin(ssl, socket);
        }
    }
    return 0;
}

int TlsTransport::begin(ssl_st& ssl, tcp_conn const& socket)
{
    bool const outgoing = !target_.empty();
    sa peer{};
    if (!outgoing) {
        (void)tcp_conn_peer_get(&socket, &peer);
    }
    auto* const connection = new Connection{shared_from_this(), ssl, outgoing ? targetAddress_ : SocketAddress(peer),
                                            outgoing ? target_ : addressText(peer), outgoing};
    SSL_set_ex_data(&ssl, Connection::index(), connection);
    connections_[connection->peer] = connection;
    failures_.erase(connection->host);
    if (!outgoing) {
        int const mode = SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT;
        SSL_set_verify(&ssl, config_.asksForCertificates ? mode : SSL_VERIFY_NONE, nullptr);
    } else if (!isAddress(target_)) {
        // What the macro SSL_set_tlsext_host_name does, without its casts.
        SSL_ctrl(&ssl, SSL_CTRL_SET_TLSEXT_HOSTNAME, TLSEXT_NAMETYPE_host_name, target_.data());
    }
    return outgoing || config_.asksForCertificates ? trustAuthorities(*connection, ssl) : 0;
}

int TlsTransport::trustAuthorities(Connection const& connection, ssl_st& ssl)
{
    std::string const& host = connection.host;
    std::string const file = config_.authoritiesFor ? config_.authoritiesFor(host) : std::string();
    std::unique_ptr<X509_STORE, decltype(&X509_STORE_free)> const store(X509_STORE_new(), X509_STORE_free);
    if (file.empty()) {
        fail(host, "no authority is trusted for " + host + ": certificates.folder has neither " + host +
                       ".pem nor authorities.pem");
        return EPROTO;
    }
    ERR_clear_error();
    if (X509_STORE_load_file(store.get(), file.c_str()) != 1) {
        fail(host, "no authority is trusted for " + host + ": " + file + " cannot be used: " + errorOfLibrary());
        return EPROTO;
    }
    SSL_set1_verify_cert_store(&ssl, store.get());
    return 0;
}

int TlsTransport::verify(X509_STORE_CTX* verification, void* /*transport*/)
{
    auto const* const ssl =
        static_cast<SSL*>(X509_STORE_CTX_get_ex_data(verification, SSL_get_ex_data_X509_STORE_CTX_idx()));
    Connection const& connection = Connection::of(*ssl);
    if (X509_verify_cert(verification) != 1) {
        connection.transport->fail(connection.host, verificationText(connection.host, *verification));
        return 0;
    }
    X509 const& certificate = *X509_STORE_CTX_get0_cert(verification);
    if (connection.outgoing && !isFor(certificate, connection.host)) {
        X509_STORE_CTX_set_error(verification, X509_V_ERR_HOSTNAME_MISMATCH);
        connection.transport->fail(connection.host, wrongNameText(connection.host, certificate));
        return 0;
    }
    return 1;
}

void TlsTransport::onProgress(Connection& connection, int where, int value)
{
    bool const isFatal = (value >> 8) == SSL3_AL_FATAL;
    if (where == SSL_CB_HANDSHAKE_DONE) {
        connection.established = true;
    } else if (where == SSL_CB_READ_ALERT && isFatal && connection.outgoing) {
        fail(connection.host, connection.host + " refuses the connection: " + SSL_alert_desc_string_long(value));
    }
}

}  // namespace telephone::sip
