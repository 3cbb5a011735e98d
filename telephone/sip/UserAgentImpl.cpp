#include "telephone/sip/UserAgentImpl.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "telephone/sip/EventLoop.h"
#include "telephone/sip/IncomingRequestImpl.h"
#include "telephone/sip/NotifierImpl.h"
#include "telephone/sip/SessionImpl.h"
#include "telephone/sip/SubscriptionImpl.h"
#include "telephone/sip/TransferImpl.h"

namespace telephone::sip {

namespace {

constexpr std::uint32_t kTransactionBuckets = 256;
constexpr std::uint32_t kConnectionBuckets = 64;
constexpr int kSessionBuckets = 256;
// After this every transaction of a closed element is over (RFC 3261: 64 * T1, and some).
constexpr std::chrono::seconds kAfterlife{40};
constexpr std::array<std::string_view, 9> kMethods{"INVITE", "ACK",   "BYE",       "CANCEL", "OPTIONS",
                                                   "INFO",   "REFER", "SUBSCRIBE", "NOTIFY"};

void check(int error, std::string const& what)
{
    if (error) {
        throw std::runtime_error(what + ": " + errorText(error));
    }
}

bool isMethod(sip_msg const& message, char const* method)
{
    return pl_strcmp(&message.met, method) == 0;
}

bool isOwnMethod(sip_msg const& message)
{
    return std::find(kMethods.begin(), kMethods.end(), view(message.met)) != kMethods.end();
}

// The least that the stack's own handlers take for granted (RFC 3261 section 8.1.1).
bool isComplete(sip_msg const& message)
{
    return message.via.branch.p && message.callid.p && message.from.auri.p && message.to.auri.p && message.cseq.met.p &&
           message.from.tag.p;
}

}  // namespace

UserAgent::Impl::Impl(EventLoop& eventLoop, UserAgentConfig settings, UserAgentObserver& watcher)
    : loop(eventLoop)
    , config(std::move(settings))
    , observer(&watcher)
    , clock(loop)
{}

UserAgent::Impl::~Impl() = default;

void UserAgent::Impl::open()
{
    check(sip_alloc(&stack, nullptr, kTransactionBuckets, kTransactionBuckets, kConnectionBuckets, config.name.c_str(),
                    nullptr, this),
          "the SIP stack does not start");
    bind();
    listen();
}

void UserAgent::Impl::bind()
{
    check(sa_set_str(&address, config.address.c_str(), config.udpPort), "\"" + config.address + "\" is no IP address");
    if (sa_is_any(&address)) {
        throw std::runtime_error("the SIP address must be one of this machine's, not " + config.address);
    }
    check(sip_transp_add(stack, SIP_TRANSP_UDP, &address),
          "UDP port " + std::to_string(config.udpPort) + " of " + config.address);
    sa bound{};
    check(sip_transp_laddr(stack, &bound, SIP_TRANSP_UDP, &address), "UDP");
    udpPort = sa_port(&bound);
    bindTcp();
}

void UserAgent::Impl::bindTcp()
{
    sa wanted = address;
    sa_set_port(&wanted, config.tcpPort ? config.tcpPort : udpPort);
    int error = sip_transp_add(stack, SIP_TRANSP_TCP, &wanted);
    if (error && config.tcpPort == 0) {
        sa_set_port(&wanted, 0);
        error = sip_transp_add(stack, SIP_TRANSP_TCP, &wanted);
    }
    check(error, "TCP port " + std::to_string(config.tcpPort) + " of " + config.address);
    sa bound{};
    check(sip_transp_laddr(stack, &bound, SIP_TRANSP_TCP, &address), "TCP");
    tcpPort = sa_port(&bound);
}

void UserAgent::Impl::listen()
{
    auto const first = [](sip_msg const* message, void* self) {
        return static_cast<Impl*>(self)->onRequestFirst(*message);
    };
    auto const last = [](sip_msg const* message, void* self) {
        return static_cast<Impl*>(self)->onRequestLast(*message);
    };
    auto const stray = [](sip_msg const*, void*) { return true; };
    auto const invited = [](sip_msg const* message, void* self) { static_cast<Impl*>(self)->onInvite(*message); };
    auto const subscribed = [](sip_msg const* message, void* self) {
        return static_cast<Impl*>(self)->onFirstSubscribe(*message);
    };
    auto const traced = [](bool sent, sip_transp, sa const* from, sa const* to, std::uint8_t const* packet,
                           std::size_t size, void* self) {
        static_cast<Impl*>(self)->onTrace(sent, *from, *to, {reinterpret_cast<const char*>(packet), size});
    };
    check(sip_listen(firstListener.out(), stack, true, first, this), "SIP");
    check(sipsess_listen(sessionSocket.out(), stack, kSessionBuckets, invited, this), "SIP sessions");
    check(sipevent_listen(eventSocket.out(), stack, kTransactionBuckets, kTransactionBuckets, subscribed, this),
          "SIP events");
    check(sip_listen(lastListener.out(), stack, true, last, this), "SIP");
    check(sip_listen(strayListener.out(), stack, false, stray, this), "SIP");
    sip_set_trace_handler(stack, traced);
}

// Sessions and the like that were given up still have their farewells to say; they hold references to the stack.
void UserAgent::Impl::waitForQuiet()
{
    if (loop.isLockedByCaller()) {
        return;
    }
    auto const deadline = std::chrono::steady_clock::now() + config.closingTime;
    while (std::chrono::steady_clock::now() < deadline) {
        {
            std::lock_guard guard(loop);
            if (mem_nrefs(stack) <= 1) {
                return;
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

void UserAgent::Impl::close()
{
    {
        std::lock_guard guard(loop);
        closed = true;
        observer = nullptr;
    }
    if (!stack) {
        return;
    }
    waitForQuiet();

    std::lock_guard guard(loop);
    sip_set_trace_handler(stack, nullptr);
    firstListener.reset();
    lastListener.reset();
    strayListener.reset();
    // What waits for an answer that does not come would keep the port bound. Safe only when nobody else holds it.
    if (livingSessions == 0) {
        sipsess_close_all(sessionSocket.get());
    }
    sip_close(stack, true);
    sip_transp_flush(stack);
    sessionSocket.reset();
    eventSocket.reset();
    if (mem_nrefs(stack) > 1) {
        // Something of it lives on until its timers are through, and still points here.
        auto const grave = std::make_shared<Timer>(loop);
        grave->start(kAfterlife, [grave, self = shared_from_this()] {});
    }
    stack = static_cast<::sip*>(mem_deref(stack));
}

void UserAgent::Impl::say(LogLevel level, std::string const& line) const
{
    if (config.log) {
        config.log(level, line);
    }
}

void UserAgent::Impl::refuse(std::string const& what, std::string const& why, std::string* whyNot) const
{
    say(LogLevel::kWarning, what + ": " + why);
    if (whyNot) {
        *whyNot = why;
    }
}

std::string UserAgent::Impl::localUri(std::string const& user, sip_transp transport) const
{
    sa local = address;
    sa_set_port(&local, transport == SIP_TRANSP_TCP ? tcpPort : udpPort);
    return "sip:" + user + "@" + addressText(local) + sip_transp_param(transport);
}

std::optional<Route> UserAgent::Impl::routeTo(Account const& account, std::string const& target,
                                              std::string& whyNot) const
{
    auto uri = Uri::parse(target);
    if (!uri || uri->scheme != "sip") {
        whyNot = "\"" + target + "\" is no SIP URI";
        return std::nullopt;
    }
    if (equalsIgnoringCase(uri->host, "localhost")) {
        uri->host = "127.0.0.1";
    }
    if (account.transport == Transport::kTcp && !uri->parameter("transport")) {
        uri->setParameter("transport", "tcp");
    }
    sa resolved{};
    if (account.proxy.empty() && sa_set_str(&resolved, uri->host.c_str(), SIP_PORT) != 0) {
        whyNot = "host \"" + uri->host + "\" is no IP address";
        return std::nullopt;
    }
    Route route;
    route.target = uri->format();
    route.fromUri = "sip:" + escapeUser(account.user.empty() ? "anonymous" : account.user) + "@" +
                    (account.domain.empty() ? addressText(address) : account.domain);
    // The quotes are the stack's; the escapes are ours.
    NameAddr name;
    name.displayName = account.displayName;
    const std::string quoted = name.format();
    if (!account.displayName.empty()) {
        route.fromName = quoted.substr(1, quoted.rfind("\" <") - 1);
    }
    route.contactUser = escapeUser(account.user.empty() ? config.name : account.user);
    route.proxy = account.proxy;
    return route;
}

void UserAgent::Impl::add(std::string const& callId, SessionImpl& session)
{
    sessions.emplace(callId, &session);
}

void UserAgent::Impl::remove(SessionImpl& session)
{
    std::erase_if(sessions, [&session](auto const& entry) { return entry.second == &session; });
}

SessionImpl* UserAgent::Impl::find(std::string const& callId, std::string const& localTag) const
{
    auto const [begin, end] = sessions.equal_range(callId);
    for (auto entry = begin; entry != end; ++entry) {
        const std::string own = entry->second->dialogId().localTag;
        if (localTag.empty() || own.empty() || own == localTag) {
            return entry->second;
        }
    }
    return nullptr;
}

bool UserAgent::Impl::onRequestFirst(sip_msg const& message)
{
    if (closed) {
        return false;
    }
    if (!isComplete(message)) {
        say(LogLevel::kInfo, "Request without what every request has, from " + addressText(message.src));
        if (message.via.branch.p && !isMethod(message, "ACK")) {
            (void)sip_reply(stack, &message, 400, "Bad Request");
        }
        return true;
    }
    if (isMethod(message, "ACK") || isMethod(message, "CANCEL")) {
        return false;
    }
    if (refuseUnsupported(message)) {
        return true;
    }
    if (isMethod(message, "BYE")) {
        noteBye(message);
    }
    if (isMethod(message, "OPTIONS")) {
        answerOptions(message);
        return true;
    }
    return !message.to.tag.p && takeOutOfDialog(message);
}

// RFC 3261 section 8.2.2.3.
bool UserAgent::Impl::refuseUnsupported(sip_msg const& message) const
{
    std::string unsupported;
    for (auto const& value : headersOf(message).values("Require")) {
        for (auto const& option : splitList(value)) {
            if (!equalsIgnoringCase(option, kSupported)) {
                unsupported += (unsupported.empty() ? "" : ", ") + option;
            }
        }
    }
    if (unsupported.empty()) {
        return false;
    }
    (void)sip_treplyf(nullptr, nullptr, stack, &message, false, 420, "Bad Extension", "%s",
                      replyTail({{"Unsupported", unsupported}}, {}).c_str());
    return true;
}

void UserAgent::Impl::answerOptions(sip_msg const& message) const
{
    const std::string user = text(message.uri.user);
    if (!user.empty() && observer && !observer->knowsUser(user)) {
        (void)sip_treply(nullptr, stack, &message, 404, "Not Found");
        return;
    }
    const Headers headers{{"Allow", kAllow},
                          {"Accept", "application/sdp, application/dtmf-relay, message/sipfrag"},
                          {"Supported", kSupported}};
    (void)sip_treplyf(nullptr, nullptr, stack, &message, false, 200, "OK", "%s", replyTail(headers, {}).c_str());
}

// Requests that begin something. True when answered or taken here; INVITE and SUBSCRIBE go on to the stack.
bool UserAgent::Impl::takeOutOfDialog(sip_msg const& message)
{
    bool const begins = isMethod(message, "INVITE") || isMethod(message, "SUBSCRIBE");
    if (begins || isMethod(message, "BYE")) {
        return false;
    }
    if (isMethod(message, "NOTIFY")) {
        takeUnsolicitedNotify(message);
        return true;
    }
    if (isMethod(message, "REFER")) {
        takeRefer(message);
        return true;
    }
    std::unique_ptr<IncomingRequest> request = std::make_unique<IncomingRequestImpl>(shared_from_this(), message);
    if (observer) {
        observer->onRequest(request);
    }
    if (request) {
        (void)request->reply(405, "Method Not Allowed", {{"Allow", kAllow}}, {});
    }
    return true;
}

void UserAgent::Impl::takeUnsolicitedNotify(sip_msg const& message)
{
    if (!sip_msg_hdr(&message, SIP_HDR_EVENT)) {
        (void)sip_treply(nullptr, stack, &message, 489, "Bad Event");
        return;
    }
    (void)sip_treply(nullptr, stack, &message, 200, "OK");
    if (observer) {
        observer->onUnsolicitedNotify(nameAddrOf(message.from), nameAddrOf(message.to), readNotification(message));
    }
}

void UserAgent::Impl::takeRefer(sip_msg const& message)
{
    std::string user = text(message.uri.user);
    auto transfer = TransferImpl::read(shared_from_this(), message, nullptr, user.empty() ? config.name : user);
    if (transfer && observer) {
        observer->onTransferRequested(std::move(transfer));
    }
}

bool UserAgent::Impl::onRequestLast(sip_msg const& message)
{
    if (isMethod(message, "ACK")) {
        return true;
    }
    if (isMethod(message, "CANCEL") || isOwnMethod(message)) {
        (void)sip_reply(stack, &message, 481, "Call/Transaction Does Not Exist");
        return true;
    }
    (void)sip_treplyf(nullptr, nullptr, stack, &message, false, 405, "Method Not Allowed", "%s",
                      replyTail({{"Allow", kAllow}}, {}).c_str());
    return true;
}

void UserAgent::Impl::onInvite(sip_msg const& message)
{
    if (!observer) {
        (void)sip_treply(nullptr, stack, &message, 503, "Service Unavailable");
        return;
    }
    if (!observer->knowsUser(text(message.uri.user))) {
        (void)sip_treply(nullptr, stack, &message, 404, "Not Found");
        return;
    }
    std::unique_ptr<SessionImpl> session;
    try {
        session = std::make_unique<SessionImpl>(shared_from_this(), message);
    } catch (std::exception const& error) {
        say(LogLevel::kError, std::string("An incoming call is refused: ") + error.what());
        (void)sip_treply(nullptr, stack, &message, 500, "Server Internal Error");
        return;
    }
    switch (int const status = session->begin()) {
    case 0:
        observer->onIncomingCall(std::move(session));
        break;
    case 400:
        (void)session->reject(status, "Missing Contact", {});
        break;
    case 415:
        (void)session->reject(status, "Unsupported Media Type", {{"Accept", kSdpType}});
        break;
    case 488:
        (void)session->reject(status, "Not Acceptable Here", {});
        break;
    default:
        (void)session->reject(status, "Server Internal Error", {});
        break;
    }
}

bool UserAgent::Impl::onFirstSubscribe(sip_msg const& message)
{
    sip_hdr const* header = sip_msg_hdr(&message, SIP_HDR_EVENT);
    sipevent_event event{};
    if (!header || sipevent_event_decode(&event, &header->val) != 0) {
        (void)sip_treply(nullptr, stack, &message, 489, "Bad Event");
        return true;
    }
    if (!observer || !observer->knowsUser(text(message.uri.user))) {
        (void)sip_treply(nullptr, stack, &message, 404, "Not Found");
        return true;
    }
    if (contactOf(message).empty()) {
        (void)sip_treply(nullptr, stack, &message, 400, "Missing Contact");
        return true;
    }
    observer->onSubscribe(std::make_unique<NotifierImpl>(shared_from_this(), message, event));
    return true;
}

// The stack keeps the reason of a BYE to itself.
void UserAgent::Impl::noteBye(sip_msg const& message)
{
    if (SessionImpl* session = find(text(message.callid), text(message.to.tag))) {
        session->noteReason(headerValue(message, "Reason"));
    }
}

void UserAgent::Impl::onTrace(bool sent, sa const& from, sa const& to, std::string_view packet)
{
    if (config.traceMessages && config.traceMessages()) {
        say(LogLevel::kDebug,
            (sent ? "sent to " + addressText(to) : "received from " + addressText(from)) + "\n" + std::string(packet));
    }
    if (sent) {
        return;
    }
    if (packet.starts_with("SIP/2.0 ") && packet.size() > 8 && packet[8] >= '3' && packet[8] <= '6') {
        noteRefusal(packet);
    } else if (packet.starts_with("CANCEL ")) {
        noteCancel(packet);
    }
}

// The stack follows redirections by itself and tells nobody when a re-INVITE is refused. Told after the stack is done
// with the answer.
void UserAgent::Impl::noteRefusal(std::string_view packet)
{
    Ref<mbuf> buffer;
    Ref<sip_msg> message;
    if (!fill(buffer, packet) || sip_msg_decode(message.out(), buffer.get()) != 0 ||
        pl_strcmp(&message.get()->cseq.met, "INVITE") != 0 || takeRedirection(*message.get(), packet, *buffer.get())) {
        return;
    }
    loop.post([agent = weak_from_this(), response = responseOf(*message.get()), callId = text(message.get()->callid),
               tag = text(message.get()->from.tag)] {
        const auto self = agent.lock();
        SessionImpl* session = self ? self->find(callId, tag) : nullptr;
        if (session && response.status < 400) {
            session->noteRedirection(response);
        } else if (session) {
            session->noteRefusedInvite(response);
        }
    });
}

// A redirection that tells who diverted the call and why must be followed with that (RFC 5806 section 9), which the
// stack does not do. The session follows such a one itself: here the Contact is blanked in the packet that the stack is
// about to work on, and without one it leaves the redirection to us. Where that should ever fail, the stack follows as
// usual.
bool UserAgent::Impl::takeRedirection(sip_msg const& message, std::string_view packet, mbuf const& copy)
{
    sip_hdr const* contact = sip_msg_hdr(&message, SIP_HDR_CONTACT);
    bool const diverted = sip_msg_xhdr(&message, "Diversion") || sip_msg_hdr(&message, SIP_HDR_HISTORY_INFO);
    SessionImpl* session = find(text(message.callid), text(message.from.tag));
    if (message.scode >= 400 || !contact || !diverted || !session || !session->takeRedirection(responseOf(message))) {
        return false;
    }
    auto const offset = static_cast<std::size_t>(contact->val.p - reinterpret_cast<char const*>(copy.buf));
    std::fill_n(const_cast<char*>(packet.data()) + offset, contact->val.l, ' ');
    return true;
}

void UserAgent::Impl::noteCancel(std::string_view packet)
{
    Ref<mbuf> buffer;
    Ref<sip_msg> message;
    if (!fill(buffer, packet) || sip_msg_decode(message.out(), buffer.get()) != 0) {
        return;
    }
    // A CANCEL has no tag of ours yet; of two calls with one Call-ID, one is outgoing.
    auto const [begin, end] = sessions.equal_range(text(message.get()->callid));
    for (auto entry = begin; entry != end; ++entry) {
        if (!entry->second->isOutgoing()) {
            entry->second->noteReason(headerValue(*message.get(), "Reason"));
        }
    }
}

}  // namespace telephone::sip
