#include "telephone/sip/Element.h"

#include <chrono>
#include <mutex>
#include <stdexcept>

#include "telephone/sip/EventLoop.h"
#include "telephone/sip/MemoryNetwork.h"
#include "telephone/sip/ReliableResponses.h"
#include "telephone/sip/SessionTimer.h"
#include "telephone/sip/Timer.h"
#include "telephone/time/VirtualTime.h"
#include "telephone/time/Waiting.h"

namespace telephone::sip {

namespace {

constexpr std::uint32_t kTransactionBuckets = 256;
constexpr std::uint32_t kConnectionBuckets = 64;
constexpr int kSessionBuckets = 256;
// Longer than any transaction of a closed element lives (RFC 3261: 64 * T1).
constexpr std::chrono::seconds kAfterlife{40};

}  // namespace

void throwOnError(int error, std::string const& what)
{
    if (error) {
        throw std::runtime_error(what + ": " + errorText(error));
    }
}

Element::Element(EventLoop& loop, UserAgentConfig config)
    : loop_(loop)
    , config_(std::move(config))
    , clock_(loop)
    , tap_(std::make_shared<MessageTap>(loop))
{}

void Element::open()
{
    throwOnError(sip_alloc(&stack_, nullptr, kTransactionBuckets, kTransactionBuckets, kConnectionBuckets,
                           config_.name.c_str(), nullptr, this),
                 "the SIP stack does not start");
    bindUdp();
    bindTcp();
}

void Element::bindUdp()
{
    throwOnError(sa_set_str(&address_, config_.address.c_str(), config_.udpPort),
                 "\"" + config_.address + "\" is not an IP address");
    if (sa_is_any(&address_)) {
        throw std::runtime_error("the SIP address must be one of this machine's, not " + config_.address);
    }
    throwOnError(sip_transp_add(stack_, SIP_TRANSP_UDP, &address_),
                 "UDP port " + std::to_string(config_.udpPort) + " of " + config_.address);
    sa bound{};
    throwOnError(sip_transp_laddr(stack_, &bound, SIP_TRANSP_UDP, &address_), "UDP");
    udpPort_ = sa_port(&bound);
}

void Element::bindTcp()
{
    sa wanted = address_;
    sa_set_port(&wanted, config_.tcpPort ? config_.tcpPort : udpPort_);
    int error = sip_transp_add(stack_, SIP_TRANSP_TCP, &wanted);
    if (error && config_.tcpPort == 0) {
        sa_set_port(&wanted, 0);
        error = sip_transp_add(stack_, SIP_TRANSP_TCP, &wanted);
    }
    throwOnError(error, "TCP port " + std::to_string(config_.tcpPort) + " of " + config_.address);
    sa bound{};
    throwOnError(sip_transp_laddr(stack_, &bound, SIP_TRANSP_TCP, &address_), "TCP");
    tcpPort_ = sa_port(&bound);
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

void Element::onTrace(bool sent, sip_transp /*transport*/, sa const& from, sa const& to, std::uint8_t const* data,
                      std::size_t size)
{
    std::string_view const packet(reinterpret_cast<char const*>(data), size);
    if (config_.traceMessages && config_.traceMessages()) {
        log(LogLevel::kDebug,
            (sent ? "sent to " + addressText(to) : "received from " + addressText(from)) + "\n" + std::string(packet));
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
    forkedAnswers_.close();
    // An ended session that still waits for an answer would keep the port bound. Its owner must be gone.
    if (sessionToken_.use_count() == 1) {
        sipsess_close_all(sessionSocket_.get());
    }
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
    std::string supported = "replaces";
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

std::string Element::localUri(std::string const& user, sip_transp transport) const
{
    sa local = address_;
    sa_set_port(&local, port(transport));
    return "sip:" + user + "@" + addressText(local) + sip_transp_param(transport);
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

Outcome<Route> Element::routeTo(Account const& account, std::string const& target) const
{
    auto uri = Uri::parse(target);
    if (!uri || uri->scheme != "sip") {
        return refuse(RefusalKind::kBadInput, "\"" + target + "\" is not a SIP URI");
    }
    if (equalsIgnoringCase(uri->host, "localhost")) {
        uri->host = "127.0.0.1";
    }
    if (account.transport == Transport::kTcp && !uri->parameter("transport")) {
        uri->setParameter("transport", "tcp");
    }
    sa resolved{};
    if (account.proxy.empty() && sa_set_str(&resolved, uri->host.c_str(), SIP_PORT) != 0) {
        return refuse(RefusalKind::kBadInput, "host \"" + uri->host + "\" is not an IP address");
    }
    sa_set_port(&resolved, uri->port == 0 ? std::uint16_t{SIP_PORT} : uri->port);
    if (isVirtual() && account.proxy.empty() && !isInMemory(resolved)) {
        return refuse(RefusalKind::kUnavailable,
                      "in virtual time only the telephone and its exchange can be reached, and neither is at " +
                          addressText(resolved));
    }
    Route route;
    route.target = uri->format();
    route.fromUri = "sip:" + escapeUser(account.user.empty() ? "anonymous" : account.user) + "@" +
                    (account.domain.empty() ? addressText(address_) : account.domain);
    if (!account.displayName.empty()) {
        // The stack adds the quotes.
        NameAddr name;
        name.displayName = account.displayName;
        std::string const quoted = name.format();
        route.fromName = quoted.substr(1, quoted.rfind("\" <") - 1);
    }
    route.contactUser = escapeUser(account.user.empty() ? config_.name : account.user);
    route.proxy = account.proxy;
    return route;
}

}  // namespace telephone::sip
