#include "telephone/sip/Receiver.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <stdexcept>

#include "telephone/sip/EventLoop.h"
#include "telephone/sip/IncomingRequestImpl.h"
#include "telephone/sip/NotifierImpl.h"
#include "telephone/sip/SessionImpl.h"
#include "telephone/sip/SubscriptionImpl.h"
#include "telephone/sip/TransferImpl.h"

namespace telephone::sip {

namespace {

constexpr std::array<std::string_view, 10> kMethods{"INVITE", "ACK",    "BYE",   "CANCEL",    "OPTIONS",
                                                    "INFO",   "UPDATE", "REFER", "SUBSCRIBE", "NOTIFY"};

bool isMethod(sip_msg const& message, char const* method)
{
    return pl_strcmp(&message.met, method) == 0;
}

bool isOwnMethod(sip_msg const& message)
{
    return std::find(kMethods.begin(), kMethods.end(), view(message.met)) != kMethods.end();
}

// Has the headers that the stack's own handlers rely on (RFC 3261 section 8.1.1).
bool isComplete(sip_msg const& message)
{
    return message.via.branch.p && message.callid.p && message.from.auri.p && message.to.auri.p && message.cseq.met.p &&
           message.from.tag.p;
}

}  // namespace

Receiver::Receiver(std::shared_ptr<Element> element, UserAgentObserver& observer)
    : element_(std::move(element))
    , observer_(&observer)
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
    if (!isComplete(message)) {
        element_->log(LogLevel::kInfo, "Request from " + addressText(message.src) + " lacks mandatory headers");
        if (message.via.branch.p && !isMethod(message, "ACK")) {
            (void)sip_reply(element_->stack(), &message, 400, "Bad Request");
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
    element_->answer(message, 420, "Bad Extension", {{"Unsupported", unsupported}});
    return true;
}

void Receiver::answerOptions(sip_msg const& message) const
{
    if (pl_isset(&message.uri.user) && !knowsUserOf(message)) {
        element_->answer(message, 404, "Not Found");
        return;
    }
    Headers headers = element_->capabilities();
    headers.add("Accept", "application/sdp, application/dtmf-relay, message/sipfrag");
    element_->answer(message, 200, "OK", headers);
}

// True when the request is answered or taken here; INVITE and SUBSCRIBE go on to the stack, and so does what belongs
// into a dialog.
bool Receiver::takeOutOfDialog(sip_msg const& message)
{
    if (isMethod(message, "INVITE") || isMethod(message, "SUBSCRIBE") || isMethod(message, "BYE") ||
        isMethod(message, "UPDATE")) {
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
        element_->answer(message, 489, "Bad Event");
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
    if (isMethod(message, "CANCEL") || isOwnMethod(message)) {
        (void)sip_reply(element_->stack(), &message, 481, "Call/Transaction Does Not Exist");
        return true;
    }
    element_->answer(message, 405, "Method Not Allowed", {{"Allow", kAllow}});
    return true;
}

void Receiver::onInvite(sip_msg const& message)
{
    if (!observer_) {
        element_->answer(message, 503, "Service Unavailable");
        return;
    }
    if (!knowsUserOf(message)) {
        element_->answer(message, 404, "Not Found");
        return;
    }
    std::unique_ptr<SessionImpl> session;
    try {
        session = std::make_unique<SessionImpl>(element_, message);
    } catch (std::exception const& error) {
        element_->log(LogLevel::kError, std::string("An incoming call is refused: ") + error.what());
        element_->answer(message, 500, "Server Internal Error");
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
        element_->answer(message, 489, "Bad Event");
    } else if (!knowsUserOf(message)) {
        element_->answer(message, 404, "Not Found");
    } else if (contactOf(message).empty()) {
        element_->answer(message, 400, "Missing Contact");
    } else {
        observer_->onSubscribe(std::make_unique<NotifierImpl>(element_, message, event));
    }
    return true;
}

}  // namespace telephone::sip
