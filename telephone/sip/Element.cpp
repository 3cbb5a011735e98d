#include "telephone/sip/Element.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <mutex>
#include <stdexcept>

#include "telephone/sip/DigestResponse.h"
#include "telephone/sip/DnsClient.h"
#include "telephone/sip/EventLoop.h"
#include "telephone/sip/LocalAddresses.h"
#include "telephone/sip/MemoryNetwork.h"
#include "telephone/sip/MessageTrace.h"
#include "telephone/sip/RegistrationImpl.h"
#include "telephone/sip/ReliableResponses.h"
#include "telephone/sip/Sdes.h"
#include "telephone/sip/ServerRequest.h"
#include "telephone/sip/SessionTimer.h"
#include "telephone/sip/Timer.h"
#include "telephone/sip/WireText.h"
#include "telephone/time/VirtualTime.h"
#include "telephone/time/Waiting.h"

namespace telephone::sip {

namespace {

constexpr std::uint32_t kTransactionBuckets = 256;
constexpr std::uint32_t kConnectionBuckets = 64;
constexpr int kSessionBuckets = 256;
// Longer than any transaction of a closed element lives (RFC 3261: 64 * T1).
constexpr std::chrono::seconds kAfterlife{40};

struct TransportNames
{
    Transport transport;
    sip_transp stack;
    char const* parameter;  // of a URI; null: none is needed
};
constexpr auto kTransports = std::to_array<TransportNames>({
    {Transport::kUdp, SIP_TRANSP_UDP, nullptr},
    {Transport::kTcp, SIP_TRANSP_TCP, "tcp"},
    {Transport::kTls, SIP_TRANSP_TLS, "tls"},
});

// The transport that the URI asks for.
sip_transp transportOf(Uri const& uri)
{
    if (uri.scheme == "sips") {
        return SIP_TRANSP_TLS;
    }
    auto const wanted = uri.parameter("transport").value_or("");
    auto const found = std::ranges::find_if(kTransports, [&wanted](TransportNames const& row) {
        return row.parameter != nullptr && equalsIgnoringCase(row.parameter, wanted);
    });
    return found == kTransports.end() ? SIP_TRANSP_UDP : found->stack;
}

// Asks for the transport, unless the address names one.
void useTransport(Transport transport, Uri& uri)
{
    auto const* const parameter = std::ranges::find(kTransports, transport, &TransportNames::transport)->parameter;
    if (parameter != nullptr && uri.scheme == "sip" && !uri.parameter("transport")) {
        uri.setParameter("transport", parameter);
    }
}

// The host that a request to the URI goes to.
std::string hostOf(Uri const& uri)
{
    return uri.parameter("maddr").value_or(uri.host);
}

// Nothing for an address, which needs no server to be found.
std::optional<Destination> namedBy(Uri const& uri)
{
    auto const transport =
        transportOf(uri) == SIP_TRANSP_TLS ? std::optional<std::string>("tls") : uri.parameter("transport");
    return namedDestination(hostOf(uri), uri.port, transport);
}

std::vector<std::string> proxiesOf(Account const& account)
{
    return account.proxy.empty() ? std::vector<std::string>() : std::vector<std::string>{account.proxy};
}

}  // namespace

void throwOnError(int error, std::string const& what)
{
    if (error) {
        throw std::runtime_error(what + ": " + errorText(error));
    }
}

sip_transp stackTransport(Transport transport)
{
    return std::ranges::find(kTransports, transport, &TransportNames::transport)->stack;
}

std::vector<char const*> Route::proxyTexts() const
{
    std::vector<char const*> texts(proxies.size());
    std::ranges::transform(proxies, texts.begin(), &std::string::c_str);
    return texts;
}

Element::Element(EventLoop& loop, UserAgentConfig config)
    : loop_(loop)
    , config_(std::move(config))
    , clock_(loop)
    , tap_(std::make_shared<MessageTap>(loop))
    , connectionLimits_(config_.limits, config_.log)
{}

void Element::open()
{
    tagSecret_ = std::to_string(rand_u64());
    throwOnError(sip_alloc(&stack_, nullptr, kTransactionBuckets, kTransactionBuckets, kConnectionBuckets,
                           config_.name.c_str(), nullptr, this),
                 "the SIP stack does not start");
    addresses_ = valueOrThrow(localAddresses(config_.address));
    bindUdp();
    bindTcp();
    if (auto const opened = config_.tlsFromTheStart ? openTls() : Outcome<>(); !opened) {
        throw std::runtime_error(opened.error().reason);
    }
    findServers();
}

// In virtual time there is no DNS but one that a test supplies.
void Element::findServers()
{
    if (isVirtual() && !config_.dns) {
        return;
    }
    ServerSearch::Settings settings{{Transport::kUdp, Transport::kTcp}, {}, [](std::uint32_t greatest) {
                                        return static_cast<std::uint32_t>(rand_u32() % (std::uint64_t{greatest} + 1));
                                    }};
    if (tls_) {
        settings.transports.push_back(Transport::kTls);
    }
    for (sa const& each : addresses_) {
        settings.families.push_back(sa_af(&each) == AF_INET6 ? AddressFamily::kIpv6 : AddressFamily::kIpv4);
    }
    auto dns = config_.dns ? config_.dns : std::make_shared<DnsClient>(config_.dnsServers);
    servers_ = std::make_unique<Servers>(loop_, std::move(dns), settings, config_.log);
    setServers(stack_, servers_.get());
}

// Binds that port, or for 0 one that is free, which is then the port. Returns 0, or an error of errno.
int Element::bind(sip_transp transport, sa const& local, std::uint16_t& port, ::tls* context)
{
    sa wanted = local;
    sa_set_port(&wanted, port);
    int error = sip_transp_add(stack_, transport, &wanted, context);
    sa bound{};
    if (!error) {
        error = sip_transp_laddr(stack_, &bound, transport, &local);
    }
    port = error ? port : sa_port(&bound);
    if (!error && transport != SIP_TRANSP_UDP) {
        connectionLimits_.guard(bound);
    }
    return error;
}

// All addresses have the same port.
void Element::bindUdp()
{
    udpPort_ = config_.udpPort;
    for (sa const& local : addresses_) {
        throwOnError(bind(SIP_TRANSP_UDP, local, udpPort_),
                     "UDP port " + std::to_string(udpPort_) + " of " + hostText(local));
    }
}

void Element::bindTcp()
{
    tcpPort_ = config_.tcpPort ? config_.tcpPort : udpPort_;
    for (sa const& local : addresses_) {
        int error = bind(SIP_TRANSP_TCP, local, tcpPort_);
        if (error && config_.tcpPort == 0 && &local == &addresses_.front()) {
            tcpPort_ = 0;
            error = bind(SIP_TRANSP_TCP, local, tcpPort_);
        }
        throwOnError(error, "TCP port " + std::to_string(tcpPort_) + " of " + hostText(local));
    }
}

sa const& Element::addressOf(int family) const
{
    auto const found = std::ranges::find_if(addresses_, [family](sa const& each) { return sa_af(&each) == family; });
    return found == addresses_.end() ? address() : *found;
}

int Element::familyOf(Uri const& uri) const
{
    sa numeric{};
    if (sa_set_str(&numeric, hostOf(uri).c_str(), 0) == 0) {
        return sa_af(&numeric);
    }
    auto const destination = namedBy(uri);
    auto const place = servers_ && destination ? servers_->known(*destination) : std::nullopt;
    return place && sa_set_str(&numeric, place->address.c_str(), 0) == 0 ? sa_af(&numeric) : sa_af(&address());
}

Outcome<> Element::openTls()
{
    if (tls_) {
        return {};
    }
    if (!config_.tls || isVirtual()) {
        return refuse(RefusalKind::kNotSupported,
                      isVirtual() ? "there is no TLS in virtual time: use udp or tcp" : "TLS is off");
    }
    auto const failed = [this](std::string const&, std::string const& reason) {
        log(LogLevel::kWarning, "TLS fails: " + reason);
    };
    auto made = TlsTransport::make(
        *stack_, *config_.tls, {failed, [this](auto const& host, auto const& peer) { onConnectionEnded(host, peer); }});
    if (!made) {
        return tl::unexpected(made.error());
    }
    tlsPort_ = config_.tlsPort;
    for (sa const& local : addresses_) {
        if (int const error = bind(SIP_TRANSP_TLS, local, tlsPort_, (*made)->context())) {
            return refuse(RefusalKind::kUnavailable,
                          "TLS port " + std::to_string(tlsPort_) + " of " + hostText(local) + ": " + errorText(error));
        }
    }
    tls_ = *std::move(made);
    return {};
}

// The stack does not tell of a connection that ends after a request has been sent, as one does whose far end finds that
// the telephone shows no certificate.
void Element::onConnectionEnded(std::string const& host, SocketAddress const& peer)
{
    noteConnectionEnded(stack_, peer);
    for (RegistrationImpl* const each : registrations_) {
        each->onConnectionEnded(host);
    }
}

std::uint16_t Element::port(sip_transp transport) const
{
    return transport == SIP_TRANSP_TLS ? tlsPort_ : transport == SIP_TRANSP_TCP ? tcpPort_ : udpPort_;
}

void Element::listen(sipsess_conn_h* invited, sip_msg_h* subscribed, void* receiver)
{
    forkedAnswers_.listen();
    throwOnError(sipsess_listen(sessionSocket_.out(), stack_, kSessionBuckets, invited, receiver), "SIP sessions");
    throwOnError(
        sipevent_listen(eventSocket_.out(), stack_, kTransactionBuckets, kTransactionBuckets, subscribed, receiver),
        "SIP events");
    sip_set_trace_handler(stack_, handlerOf<&Element::onTrace>);
}

void Element::onTrace(bool sent, sip_transp transport, sa const& from, sa const& to, std::uint8_t const* data,
                      std::size_t size)
{
    std::string_view const packet(reinterpret_cast<char const*>(data), size);
    if (isTracing()) {
        traceMessage({sent, transport, sent ? to : from, packet}, config_.isTraced);
    }
    if (config_.traceMessages && config_.traceMessages()) {
        log(LogLevel::kDebug, (sent ? "sent to " + addressText(to) : "received from " + addressText(from)) + "\n" +
                                  withoutSecrets(packet));
    }
    if (!sent) {
        tap_->onReceived(packet);
    }
}

void Element::settle()
{
    {
        std::lock_guard guard(loop_);
        closed_ = true;
    }
    if (!stack_ || loop_.isLockedByCaller()) {
        return;
    }
    auto const deadline = SteadyClock::now() + config_.closingTime;
    while (SteadyClock::now() < deadline) {
        {
            std::lock_guard guard(loop_);
            if (mem_nrefs(stack_) <= 1) {
                return;
            }
        }
        sleepFor(std::chrono::milliseconds(2));
    }
}

void Element::close(std::shared_ptr<void> receiver)
{
    if (!stack_) {
        return;
    }
    sip_set_trace_handler(stack_, nullptr);
    if (tls_) {
        tls_->close();
    }
    forkedAnswers_.close();
    // An ended session that still waits for an answer would keep the port bound. Its owner must be gone.
    if (sessionToken_.use_count() == 1) {
        sipsess_close_all(sessionSocket_.get());
    }
    setServers(stack_, nullptr);
    sip_close(stack_, true);
    sip_transp_flush(stack_);
    sessionSocket_.reset();
    eventSocket_.reset();
    if (mem_nrefs(stack_) > 1) {
        auto const grave = std::make_shared<Timer>(loop_);
        grave->start(kAfterlife, [grave, self = shared_from_this(), receiver = std::move(receiver)] {});
    }
    stack_ = static_cast<::sip*>(mem_deref(stack_));
}

Headers Element::capabilities() const
{
    std::string supported = "replaces, join";
    if (config_.sessionExpires > std::chrono::seconds(0)) {
        supported += std::string(", ") + kTimerExtension;
    }
    if (config_.reliableResponses != ReliableUse::kNone) {
        supported += std::string(", ") + kReliableExtension;
    }
    return {{"Allow", kAllow}, {"Supported", supported}};
}

bool Element::supports(std::string_view extension) const
{
    return capabilities().lists("Supported", extension);
}

void Element::log(LogLevel level, std::string const& line) const
{
    if (config_.log) {
        config_.log(level, line);
    }
}

void Element::logRefusal(Outcome<> const& result) const
{
    if (!result) {
        log(LogLevel::kWarning, result.error().reason);
    }
}

std::string Element::hostPort(sa const& local, sip_transp transport) const
{
    sa bound = local;
    sa_set_port(&bound, port(transport));
    return addressText(bound);
}

std::string Element::contactUserFor(sip_msg const& request) const
{
    return pl_isset(&request.uri.user) ? text(request.uri.user) : config_.name;
}

void Element::answer(sip_msg const& request, std::uint16_t status, char const* reason, Headers const& headers,
                     Content const& content) const
{
    (void)sip_treplyf(nullptr, nullptr, stack_, &request, false, status, reason, "%s",
                      replyTail(headers, content).c_str());
}

Outcome<> Element::checkReachable(sa const& address) const
{
    if (sa_af(&addressOf(sa_af(&address))) != sa_af(&address)) {
        return refuse(RefusalKind::kUnavailable, addressText(address) + " cannot be reached: the telephone has no " +
                                                     (sa_af(&address) == AF_INET6 ? "IPv6" : "IPv4") + " address");
    }
    if (isVirtual() && !isInMemory(address)) {
        return refuse(RefusalKind::kUnavailable,
                      "in virtual time only the telephone and its exchange can be reached, and neither is at " +
                          addressText(address));
    }
    return {};
}

Outcome<> Element::checkReachable(Uri const& uri) const
{
    sa address{};
    if (sa_set_str(&address, hostOf(uri).c_str(), uri.port == 0 ? std::uint16_t{SIP_PORT} : uri.port) == 0) {
        return checkReachable(address);
    }
    if (!servers_) {
        return refuse(RefusalKind::kUnavailable,
                      "in virtual time names are not looked up: \"" + hostOf(uri) + "\" must be an IP address");
    }
    auto const destination = namedBy(uri);
    return destination ? servers_->check(*destination) : Outcome<>();
}

void Element::answerAndForget(sip_msg const& request, std::uint16_t status, char const* reason,
                              Headers const& headers) const
{
    // The tag depends on the request alone, so that all answers to it are the same (RFC 3261 section 8.2.7).
    std::string const tag =
        hashOf(DigestAlgorithm::kSha256, tagSecret_ + text(request.callid) + text(request.via.branch));
    const_cast<sip_msg&>(request).tag = std::stoull(tag.substr(0, 16), nullptr, 16);
    (void)sip_replyf(stack_, &request, status, reason, "%s", replyTail(headers, {}).c_str());
}

void Element::setServiceRoute(Account const& account, std::vector<std::string> const& proxies)
{
    auto& route = serviceRoutes_[account.addressOfRecord()];
    route = proxies;
    if (auto first = proxies.empty() ? std::nullopt : Uri::parse(proxies.front())) {
        useTransport(account.transport, *first);
        route.front() = first->format();
    }
}

Outcome<Route> Element::usableRouteTo(Account const& account, std::string const& target)
{
    auto const named = serviceRoutes_.find(account.addressOfRecord());
    bool const isNamed = named != serviceRoutes_.end() && !named->second.empty();
    return route(account, target, isNamed ? named->second : proxiesOf(account))
        .and_then([this](Route&& route) -> Outcome<Route> {
            auto const found = distrusted_.find(route.host);
            if (route.transport == SIP_TRANSP_TLS && found != distrusted_.end()) {
                return refuse(RefusalKind::kUnavailable, found->second);
            }
            return std::move(route);
        });
}

Response Element::failureOf(int error, Route const& route) const
{
    bool const isTls = tls_ && route.transport == SIP_TRANSP_TLS;
    std::string const known = isTls && (error == EPROTO || error == ECONNRESET) ? tls_->failureOf(route.host) : "";
    if (known.empty() && !(isTls && error == ECONNRESET)) {
        return {statusOf(error), errorText(error), {}, {}};
    }
    std::string const reason = known.empty() ? route.host + " ended the connection before it answered" : known;
    if (error == ECONNRESET && !tls_->showsCertificate()) {
        return {kTlsFailed, reason + "; it may ask for a certificate, and sip.certificate is empty", {}, {}};
    }
    return {known.empty() ? 503 : kTlsFailed, reason, {}, {}};
}

Outcome<> Element::sentTo(Route const& route, int error, std::string const& what) const
{
    if (error) {
        Response const failure = failureOf(error, route);
        return refuse(failure.status == kTlsFailed ? RefusalKind::kNotPermitted : RefusalKind::kUnavailable,
                      what + " cannot be sent: " + failure.reason);
    }
    return {};
}

Outcome<Route> Element::routeTo(Account const& account, std::string const& target)
{
    return route(account, target, proxiesOf(account));
}

Outcome<Route> Element::route(Account const& account, std::string const& target, std::vector<std::string> proxies)
{
    auto uri = Uri::parse(target);
    if (!uri || (uri->scheme != "sip" && uri->scheme != "sips")) {
        return refuse(RefusalKind::kBadInput, "\"" + target + "\" is not a SIP URI");
    }
    if (equalsIgnoringCase(uri->host, "localhost")) {
        uri->host = sa_af(&addressOf(AF_INET)) == AF_INET ? "127.0.0.1" : "::1";
    }
    useTransport(account.transport, *uri);
    bool const isDirect = proxies.empty();
    auto const hop = isDirect ? *uri : Uri::parse(proxies.front()).value_or(Uri());
    if (auto const reachable = isDirect ? checkReachable(hop) : Outcome<>(); !reachable) {
        return tl::unexpected(reachable.error());
    }
    // Headers in a URI are for a request that is made from it, and never part of its own (RFC 3261 section 19.1.5).
    uri->headers.clear();
    Route route;
    route.host = hostOf(hop);
    route.transport = transportOf(hop);
    if (auto const opened = route.transport == SIP_TRANSP_TLS ? openTls() : Outcome<>(); !opened) {
        return tl::unexpected(opened.error());
    }
    route.target = uri->format();
    route.local = addressOf(familyOf(hop));
    route.fromUri = "sip:" + escapeUser(account.user.empty() ? "anonymous" : account.user) + "@" +
                    (account.domain.empty() ? hostPort(route.local, SIP_TRANSP_UDP) : account.domain);
    if (!account.displayName.empty()) {
        // The stack adds the quotes.
        NameAddr name;
        name.displayName = account.displayName;
        std::string const quoted = name.format();
        route.fromName = quoted.substr(1, quoted.rfind("\" <") - 1);
    }
    route.contactUser = escapeUser(account.user.empty() ? config_.name : account.user);
    route.proxies = std::move(proxies);
    return route;
}

}  // namespace telephone::sip
