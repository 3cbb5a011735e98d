#include "telephone/sip/Receiver.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <mutex>
#include <stdexcept>

#include "telephone/sip/EventLoop.h"
#include "telephone/sip/ForeignRequests.h"
#include "telephone/sip/IncomingRequestImpl.h"
#include "telephone/sip/NotifierImpl.h"
#include "telephone/sip/SessionImpl.h"
#include "telephone/sip/SubscriptionImpl.h"
#include "telephone/sip/TransferImpl.h"

namespace telephone::sip {

namespace {

constexpr auto kMethods = std::to_array<std::string_view>(
    {"INVITE", "ACK", "BYE", "CANCEL", "OPTIONS", "INFO", "PRACK", "UPDATE", "REFER", "SUBSCRIBE", "NOTIFY"});
// Those that the stack takes, or that make sense only in a dialog.
constexpr auto kOfDialogs = std::to_array<std::string_view>({"INVITE", "SUBSCRIBE", "BYE", "PRACK", "UPDATE"});

bool isMethod(sip_msg const& message, char const* method)
{
    return pl_strcmp(&message.met, method) == 0;
}

template <std::size_t size>
bool isOneOf(std::array<std::string_view, size> const& methods, sip_msg const& message)
{
    return std::find(methods.begin(), methods.end(), view(message.met)) != methods.end();
}

// Has the headers that the stack's own handlers rely on (RFC 3261 section 8.1.1).
bool isComplete(sip_msg const& message)
{
    return message.via.branch.p && message.callid.p && message.from.auri.p && message.to.auri.p && message.cseq.met.p &&
           message.from.tag.p;
}

// The whole text is a number up to the highest; nothing else.
bool isNumber(std::string_view text, std::uint64_t highest)
{
    std::uint64_t number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && number <= highest;
}

// Content-Length is missing, or says no more than there is; a stream has been cut at it already.
bool hasItsLength(sip_msg const& message)
{
    std::uint64_t const left = mbuf_get_left(message.mb);
    return !message.clen.p || isNumber(view(message.clen), left);
}

// CSeq names the method, and a number below 2^31 (RFC 3261 section 8.1.1.5).
bool hasItsSequence(sip_msg const& message)
{
    sip_hdr const* const header = sip_msg_hdr(&message, SIP_HDR_CSEQ);
    std::string_view const value = header ? view(header->val) : std::string_view();
    return isNumber(value.substr(0, value.find_first_of(" \t")), 0x7fffffff) &&
           view(message.cseq.met) == view(message.met);
}

// The refusal of a request that cannot be understood; status 0: it can.
struct MalformedLine
{
    std::uint16_t status = 0;
    char const* reason = "";
};

MalformedLine malformationOf(sip_msg const& message)
{
    if (auto const strangeness = strangenessOf(message)) {
        return strangeness == Strangeness::kVersion ? MalformedLine{505, "Version Not Supported"}
                                                    : MalformedLine{416, "Unsupported URI Scheme"};
    }
    bool const isSound = isComplete(message) && hasItsLength(message) && hasItsSequence(message);
    return isSound ? MalformedLine{} : MalformedLine{400, "Bad Request"};
}

}  // namespace

Receiver::Receiver(std::shared_ptr<Element> element, UserAgentObserver& observer)
    : element_(std::move(element))
    , observer_(&observer)
    , gate_(element_, [this](std::string const& user) { return observer_->guardedUser(user); })
{}

void Receiver::listen()
{
    auto const stray = [](sip_msg const*, void*) { return true; };
    throwOnError(sip_listen(firstListener_.out(), element_->stack(), true, handlerOf<&Receiver::onRequestFirst>, this),
                 "SIP");
    element_->listen(handlerOf<&Receiver::onInvite>, handlerOf<&Receiver::onFirstSubscribe>, this);
    throwOnError(sip_listen(lastListener_.out(), element_->stack(), true, handlerOf<&Receiver::onRequestLast>, this),
                 "SIP");
    throwOnError(sip_listen(strayListener_.out(), element_->stack(), false, stray, this), "SIP");
}

void Receiver::close()
{
    {
        std::lock_guard guard(element_->loop());
        observer_ = nullptr;
    }
    element_->settle();
    std::lock_guard guard(element_->loop());
    firstListener_.reset();
    lastListener_.reset();
    strayListener_.reset();
    element_->close(shared_from_this());
}

bool Receiver::knowsUserOf(sip_msg const& message) const
{
    return observer_ && observer_->knowsUser(text(message.uri.user));
}

bool Receiver::onRequestFirst(sip_msg const& message)
{
    if (!observer_) {
        return false;
    }
    if (MessageTap::isBlank(message) || !gate_.hasRoomFor(message)) {
        return true;
    }
    if (refuseMalformed(message)) {
        return true;
    }
    if (isMethod(message, "ACK") || isMethod(message, "CANCEL")) {
        return false;
    }
    if (!gate_.permits(message) || refuseUnsupported(message)) {
        return true;
    }
    if (isMethod(message, "BYE")) {
        element_->tap().onBye(message);
    }
    if (isMethod(message, "SUBSCRIBE") && message.to.tag.p) {
        prepareRefresh(message);
    }
    if (isMethod(message, "OPTIONS")) {
        answerOptions(message);
        return true;
    }
    return message.to.tag.p ? element_->tap().onRequest(message) : takeOutOfDialog(message);
}

// The stack answers a refresh without asking the notifier.
void Receiver::prepareRefresh(sip_msg const& subscribe)
{
    for (NotifierImpl* const notifier : element_->notifiers()) {
        notifier->prepareRefresh(subscribe);
    }
}

bool Receiver::refuseMalformed(sip_msg const& message) const
{
    MalformedLine const malformation = malformationOf(message);
    if (malformation.status == 0) {
        return false;
    }
    element_->log(LogLevel::kInfo, "Request from " + addressText(message.src) + " is refused: " + malformation.reason);
    if (message.via.branch.p && !isMethod(message, "ACK")) {
        (void)sip_reply(element_->stack(), &message, malformation.status, malformation.reason);
    }
    return true;
}

// RFC 3261 section 8.2.2.3.
bool Receiver::refuseUnsupported(sip_msg const& message) const
{
    std::string unsupported;
    for (auto const& option : headersOf(message).list("Require")) {
        if (!element_->supports(option)) {
            unsupported += (unsupported.empty() ? "" : ", ") + option;
        }
    }
    if (unsupported.empty()) {
        return false;
    }
    element_->answerAndForget(message, 420, "Bad Extension", {{"Unsupported", unsupported}});
    return true;
}

void Receiver::answerOptions(sip_msg const& message) const
{
    if (pl_isset(&message.uri.user) && !knowsUserOf(message)) {
        element_->answerAndForget(message, 404, "Not Found");
        return;
    }
    Headers headers = element_->capabilities();
    headers.add("Accept", "application/sdp, application/dtmf-relay, message/sipfrag");
    element_->answerAndForget(message, 200, "OK", headers);
}

// True when the request is answered or taken here; INVITE and SUBSCRIBE go on to the stack, and so does what belongs
// into a dialog.
bool Receiver::takeOutOfDialog(sip_msg const& message)
{
    if (isOneOf(kOfDialogs, message)) {
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
    std::unique_ptr<IncomingRequest> request = std::make_unique<IncomingRequestImpl>(element_, message);
    observer_->onRequest(request);
    if (request) {
        request->reply(405, "Method Not Allowed", {{"Allow", kAllow}}, {});
    }
    return true;
}

void Receiver::takeUnsolicitedNotify(sip_msg const& message)
{
    if (!sip_msg_hdr(&message, SIP_HDR_EVENT)) {
        element_->answerAndForget(message, 489, "Bad Event");
        return;
    }
    element_->answer(message, 200, "OK");
    observer_->onUnsolicitedNotify(nameAddrOf(message.from), nameAddrOf(message.to), readNotification(message));
}

void Receiver::takeRefer(sip_msg const& message)
{
    if (auto transfer = TransferImpl::read(element_, message, nullptr, element_->contactUserFor(message))) {
        observer_->onTransferRequested(std::move(transfer));
    }
}

bool Receiver::onRequestLast(sip_msg const& message)
{
    if (isMethod(message, "ACK")) {
        return true;
    }
    if (isMethod(message, "CANCEL") || isOneOf(kMethods, message)) {
        (void)sip_reply(element_->stack(), &message, 481, "Call/Transaction Does Not Exist");
        return true;
    }
    element_->answerAndForget(message, 405, "Method Not Allowed", {{"Allow", kAllow}});
    return true;
}

void Receiver::onInvite(sip_msg const& message)
{
    if (!observer_) {
        element_->answerAndForget(message, 503, "Service Unavailable");
        return;
    }
    if (!knowsUserOf(message)) {
        element_->answerAndForget(message, 404, "Not Found");
        return;
    }
    std::unique_ptr<SessionImpl> session;
    try {
        session = std::make_unique<SessionImpl>(element_, message);
    } catch (std::exception const& error) {
        element_->log(LogLevel::kError, std::string("An incoming call is refused: ") + error.what());
        element_->answerAndForget(message, 500, "Server Internal Error");
        return;
    }
    if (session->begin()) {
        observer_->onIncomingCall(std::move(session));
    }
}

bool Receiver::onFirstSubscribe(sip_msg const& message)
{
    sip_hdr const* header = sip_msg_hdr(&message, SIP_HDR_EVENT);
    sipevent_event event{};
    if (!header || sipevent_event_decode(&event, &header->val) != 0) {
        element_->answerAndForget(message, 489, "Bad Event");
    } else if (!knowsUserOf(message)) {
        element_->answerAndForget(message, 404, "Not Found");
    } else if (contactOf(message).empty()) {
        element_->answerAndForget(message, 400, "Missing Contact");
    } else {
        observer_->onSubscribe(std::make_unique<NotifierImpl>(element_, message, event));
    }
    return true;
}

}  // namespace telephone::sip
