// The stack's handlers of a session.
#include "telephone/sip/ContinuedDialog.h"
#include "telephone/sip/InvitationReader.h"
#include "telephone/sip/SessionImpl.h"
#include "telephone/sip/TransferImpl.h"

namespace telephone::sip {

namespace {

constexpr std::string_view kDigits = "0123456789*#ABCDabcd";
constexpr int kMostRedirections = 10;

// The digit of an INFO: a line "Signal=5" (application/dtmf-relay) or the digit alone (application/dtmf).
char keyOf(Content const& content)
{
    std::string body = content.body;
    if (auto const place = body.find("Signal="); place != std::string::npos) {
        body = body.substr(place + 7);
    }
    auto const first = body.find_first_not_of(" \t\r\n");
    return first == std::string::npos ? '\0' : body[first];
}

bool isDigitContent(Content const& content)
{
    std::string const type = content.type.substr(0, content.type.find(';'));
    return equalsIgnoringCase(type, "application/dtmf-relay") || equalsIgnoringCase(type, "application/dtmf");
}

}  // namespace

void SessionImpl::postFromStack(std::function<void()> work)
{
    element_->loop().post([alive = std::weak_ptr<SessionImpl*>(self_), work = std::move(work)] {
        auto const session = alive.lock();
        if (session && (*session)->state_ != SessionState::kClosed) {
            work();
        }
    });
}

void SessionImpl::learnDialog(sip_msg const& message)
{
    // In a response From is the local end, in a request To. The tags of an incoming call are known from its INVITE.
    if (outgoing_ && !message.req) {
        dialogId_.localTag = text(message.from.tag);
        if (message.to.tag.p) {
            dialogId_.remoteTag = text(message.to.tag);
        }
    }
    if (std::string const contact = contactOf(message); !contact.empty()) {
        remoteContact_ = contact;
    }
    if (Headers const headers = headersOf(message); headers.has("Allow")) {
        remoteTakesUpdate_ = headers.lists("Allow", "UPDATE");
    }
}

void SessionImpl::learnIdentity(sip_msg const& message)
{
    auto const identity = isFromServer(message) ? assertedIdentityOf(headersOf(message)) : std::nullopt;
    if (!identity || (identity->uri == remoteParty_.uri && identity->displayName == remoteParty_.displayName)) {
        return;
    }
    remoteParty_ = *identity;
    postFromStack([this] {
        if (observer_) {
            observer_->onRemoteIdentity(*this, remoteParty_);
        }
    });
}

void SessionImpl::learnPrecedence(sip_msg const& request)
{
    std::string const named = headerValue(request, "Resource-Priority");
    if (named.empty() || named == resourcePriority_) {
        return;
    }
    resourcePriority_ = named;
    postFromStack([this] {
        if (observer_) {
            observer_->onPrecedence(*this, resourcePriority_);
        }
    });
}

void SessionImpl::applyMedia()
{
    auto const agreement = sdp_.agreement();
    if (!agreement.codec.empty()) {
        rtp_.apply(agreement);
    }
    watchAudio();
}

void SessionImpl::onProgress(sip_msg const& message)
{
    learnDialog(message);
    bool const isNew = message.scode != 100 && earlyDialogs_.take(element_, message, sipsess_dialog(session_.get()),
                                                                  contactUser_, credentials_);
    if (!isNew) {
        return;
    }
    bool const described = mbuf_get_left(message.mb) > 0 && msg_ctype_cmp(&message.ctyp, "application", "sdp");
    bool const earlyMedia = described && sdp_.decode(message.mb, false) == 0;
    if (earlyMedia) {
        applyMedia();
    }
    learnIdentity(message);
    state_ = SessionState::kEarly;
    if (observer_) {
        observer_->onProgress(*this, responseOf(message), earlyMedia);
    }
}

// A re-INVITE, with an offer or asking for one.
int SessionImpl::onOffer(mbuf** description, sip_msg const& message)
{
    *description = nullptr;
    bool const described = mbuf_get_left(message.mb) > 0;
    if (described) {
        if (int const error = sdp_.decode(message.mb, true)) {
            return error;
        }
    }
    Ref<mbuf> own;
    if (!sdp_.encode(own, !described)) {
        return ENOMEM;
    }
    *description = static_cast<mbuf*>(mem_ref(own.get()));
    offerUnanswered_ = message.req && !described;
    if (message.req) {
        answerHeaders_ = withCapabilities(sessionTimer_.accept(headersOf(message)));
        learnPrecedence(message);
    }
    learnDialog(message);
    learnIdentity(message);
    if (described) {
        applyMedia();
        postFromStack([this] { announceRemoteChange(); });
    }
    if (offerBefore_) {
        postFromStack([this] { reissueModification(); });
    }
    return 0;
}

int SessionImpl::onAnswer(sip_msg const& message)
{
    bool const renegotiation = state_ == SessionState::kEstablished;
    offerUnanswered_ = offerUnanswered_ && !message.req;
    bool const described = mbuf_get_left(message.mb) > 0;
    // An answer without a description is valid if an earlier one (183) had it.
    int error = sdp_.isAgreed() ? 0 : EPROTO;
    if (described) {
        error = sdp_.decode(message.mb, false);
    } else if (renegotiation) {
        error = EPROTO;
    }
    learnDialog(message);
    learnIdentity(message);
    if (!error) {
        applyMedia();
    }
    if (!renegotiation) {
        return error;
    }
    if (message.req) {
        postFromStack([this] { announceRemoteChange(); });
    } else {
        if (!error) {
            sessionTimer_.accepted(headersOf(message));
        }
        int const status = error ? 488 : static_cast<int>(message.scode);
        postFromStack(
            [this, error, status, reason = text(message.reason)] { finishModification(error == 0, status, reason); });
    }
    return error;
}

void SessionImpl::announceRemoteChange()
{
    if (observer_) {
        observer_->onRemoteHold(*this, isHeldByRemote(), sdp_.agreement().direction);
    }
}

void SessionImpl::onEstablished(sip_msg const& message)
{
    learnDialog(message);
    state_ = SessionState::kEstablished;
    if (outgoing_) {
        element_->forkedAnswers().await(dialogId_.callId);
        earlyDialogs_.settle(sipsess_dialog(session_.get()), dialogId_.remoteTag);
        sessionTimer_.accepted(headersOf(message));
    }
    dialogHeaders_.emplace(
        sipsess_dialog(session_.get()), [this] { return withCapabilities(sessionTimer_.ofRequest()); },
        [this] { return answerHeaders_; });
    watchAudio();
    if (observer_) {
        observer_->onEstablished(*this);
    }
}

void SessionImpl::onInfo(::sip* /*stack*/, sip_msg const& message)
{
    Content const content = contentOf(message);
    element_->answer(message, 200, "OK");
    if (isDigitContent(content)) {
        if (char const key = keyOf(content); kDigits.find(key) != std::string_view::npos) {
            announceDigit(key);
        }
    } else if (observer_) {
        observer_->onInfo(*this, content);
    }
}

void SessionImpl::announceDigit(char key)
{
    if (observer_) {
        observer_->onDigit(*this, key);
    }
}

void SessionImpl::onRefer(::sip* /*stack*/, sip_msg const& message)
{
    auto transfer = TransferImpl::read(element_, message, sipsess_dialog(session_.get()), contactUser_);
    if (transfer && observer_) {
        observer_->onTransferRequested(*this, std::move(transfer));
    }
}

Closing SessionImpl::closingOf(int error, sip_msg const* message) const
{
    bool const wasEstablished =
        state_ == SessionState::kEstablished || (state_ == SessionState::kAnswering && !dueAnswer_);
    bool const isSending = outgoing_ && state_ == SessionState::kCalling && !message;
    Response const failure = element_->failureOf(error, route_);
    Closing closing;
    closing.reasonHeader = closingReason_;
    if (message && message->scode >= 300) {
        closing = {CloseCause::kRejected, message->scode, text(message->reason), {}, headersOf(*message)};
        closing.reasonHeader = closing.headers.value("Reason");
        if (wasEstablished) {
            closing.cause = message->scode == 408 ? CloseCause::kTimeout : CloseCause::kFailed;
        }
    } else if (error == ETIMEDOUT && renewing_) {
        closing = {CloseCause::kAbandoned, 408, kNoAnswerToRefresh, {}, {}};
    } else if (error == ETIMEDOUT) {
        closing.cause = CloseCause::kTimeout;
        closing.status = 408;
        closing.text = "Request Timeout";
    } else if (isSending && (failure.status == kTlsFailed || error == ECONNRESET)) {
        closing.status = failure.status;
        closing.text = failure.reason;
    } else if (error == ECONNRESET && !message) {
        closing.cause = wasEstablished || outgoing_ ? CloseCause::kRemoteHangUp : CloseCause::kCancelled;
    } else {
        closing.status = error == EPROTO || error == EBADMSG ? 488 : 503;
        closing.text = error ? errorText(error) : "the answer is unusable";
        if (!sdp_.objection().empty()) {
            closing.text = sdp_.objection();
        }
    }
    return closing;
}

void SessionImpl::onClose(int error, sip_msg const* message)
{
    // The stack answers a BYE by itself, and passes no message then.
    bool const isHangUp = error == ECONNRESET && message == nullptr;
    TraceScope const scope(isHangUp && isTracing() ? causeOfLastReceived(dialogId_.callId) : causeOfThread());
    bool const redirected = message && message->scode >= 300 && message->scode < 400;
    if ((redirected && redirection_ && followRedirection()) || callForLonger(message)) {
        return;
    }
    Closing const closing = closingOf(error, message);
    end();
    auto const infos = std::move(infos_);
    std::weak_ptr<SessionImpl*> const alive = self_;
    for (auto const& info : infos) {
        if (info->done) {
            info->done({closing.status ? closing.status : 481, closing.text, {}, {}});
        }
    }
    if (!alive.expired() && observer_) {
        observer_->onClosed(*this, closing);
    }
}

void SessionImpl::onCancelledBeforeAnswer()
{
    invite_->answer(487, "Request Terminated");
    end();
    if (!observer_) {
        return;
    }
    Closing closing;
    closing.cause = CloseCause::kCancelled;
    closing.reasonHeader = closingReason_;
    observer_->onClosed(*this, closing);
}

void SessionImpl::onInfoAnswered(PendingInfo& pending, int error, sip_msg const* message)
{
    ResponseHandler const done = std::move(pending.done);
    std::erase_if(infos_, [&pending](auto const& info) { return info.get() == &pending; });
    if (!done) {
        return;
    }
    done(message ? responseOf(*message) : element_->failureOf(error, route_));
}

void SessionImpl::onInviteRefused(Response const& response)
{
    if (response.status == 422 && offerBefore_ && sessionTimer_.lengthen(response.headers)) {
        reissueModification();
        return;
    }
    bool const challenged = response.status == 401 || response.status == 407;
    bool const retriedByStack = response.status == 491 || (challenged && !request_.account.password.empty()) ||
                                (response.status == 500 && response.headers.has("Retry-After"));
    bool const endsTheCall = response.status == 408 || response.status == 481;
    if (state_ == SessionState::kEstablished && !retriedByStack && !endsTheCall) {
        finishModification(false, response.status, response.reason);
    }
}

bool SessionImpl::takeRedirection(Response const& response)
{
    bool const calling = state_ == SessionState::kCalling || state_ == SessionState::kEarly;
    auto const contact = NameAddr::parse(response.headers.value("Contact"));
    if (!outgoing_ || !calling || redirections_ >= kMostRedirections || !contact ||
        !element_->usableRouteTo(request_.account, contact->uri.format())) {
        return false;
    }
    redirection_ = response;
    return true;
}

// Sends the INVITE again, as a new call unless its dialog is continued. False: it cannot be sent.
bool SessionImpl::restart()
{
    element_->tap().remove(*this);
    earlyDialogs_.clear();
    dialogId_ = {};
    state_ = SessionState::kCalling;
    auto const started = start();
    element_->logRefusal(started);
    return started.has_value();
}

// A server on the way permits only a longer interval of the session timer (RFC 4028 section 7.4): calls with that one.
bool SessionImpl::callForLonger(sip_msg const* refusal)
{
    bool const calling = outgoing_ && (state_ == SessionState::kCalling || state_ == SessionState::kEarly);
    if (!calling || !refusal || refusal->scode != 422 || !sessionTimer_.lengthen(headersOf(*refusal))) {
        return false;
    }
    ContinuedDialog const continued(sipsess_dialog(session_.get()));
    return restart();
}

bool SessionImpl::followRedirection()
{
    Response const response = *redirection_;
    redirection_.reset();
    ++redirections_;
    std::string const contact = NameAddr::parse(response.headers.value("Contact"))->uri.format();
    auto const route = element_->usableRouteTo(request_.account, contact);
    for (char const* name : {"Diversion", "History-Info"}) {
        for (auto const& value : response.headers.values(name)) {
            request_.headers.add(name, value);
        }
    }
    if (!route) {
        element_->tap().remove(*this);
        return false;
    }
    route_ = *route;
    if (!restart()) {
        return false;
    }
    if (observer_) {
        observer_->onRedirected(*this, contact, response);
    }
    return true;
}

void SessionImpl::onInviteRedirected(Response const& response)
{
    if (state_ == SessionState::kEstablished) {
        return finishModification(false, response.status, response.reason);
    }
    auto const contact = NameAddr::parse(response.headers.value("Contact"));
    bool const calling = state_ == SessionState::kCalling || state_ == SessionState::kEarly;
    if (observer_ && outgoing_ && calling && contact) {
        observer_->onRedirected(*this, contact->uri.format(), response);
    }
}

}  // namespace telephone::sip
