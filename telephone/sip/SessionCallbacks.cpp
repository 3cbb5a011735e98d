// What the stack tells a session.
#include <algorithm>
#include <charconv>

#include "telephone/sip/EventLoop.h"
#include "telephone/sip/InvitationReader.h"
#include "telephone/sip/SessionImpl.h"
#include "telephone/sip/TransferImpl.h"

namespace telephone::sip {

namespace {

// The key that INFO carries: "Signal=5" lines (application/dtmf-relay) or the key alone (application/dtmf).
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
    const std::string type = content.type.substr(0, content.type.find(';'));
    return equalsIgnoringCase(type, "application/dtmf-relay") || equalsIgnoringCase(type, "application/dtmf");
}

// "SIP/2.0 180 Ringing" (RFC 3420).
Response parseStatusLine(std::string const& body)
{
    Response response;
    constexpr std::string_view kVersion = "SIP/2.0 ";
    if (body.compare(0, kVersion.size(), kVersion) != 0) {
        return response;
    }
    char const* begin = body.data() + kVersion.size();
    auto const [end, error] = std::from_chars(begin, body.data() + body.size(), response.status);
    if (error != std::errc() || response.status < 100 || response.status > 699) {
        return {};
    }
    auto const rest = static_cast<std::size_t>(end - body.data());
    auto const line = body.find_first_of("\r\n");
    if (rest + 1 < std::min(line, body.size())) {
        response.reason = body.substr(rest + 1, line == std::string::npos ? line : line - rest - 1);
    }
    return response;
}

}  // namespace

void SessionImpl::progressHandler(sip_msg const* message, void* session)
{
    static_cast<SessionImpl*>(session)->onProgress(*message);
}

int SessionImpl::offerHandler(mbuf** description, sip_msg const* message, void* session)
{
    return static_cast<SessionImpl*>(session)->onOffer(description, *message);
}

int SessionImpl::answerHandler(sip_msg const* message, void* session)
{
    return static_cast<SessionImpl*>(session)->onAnswer(*message);
}

void SessionImpl::establishedHandler(sip_msg const* message, void* session)
{
    static_cast<SessionImpl*>(session)->onEstablished(*message);
}

void SessionImpl::infoHandler(::sip*, sip_msg const* message, void* session)
{
    static_cast<SessionImpl*>(session)->onInfo(*message);
}

void SessionImpl::referHandler(::sip*, sip_msg const* message, void* session)
{
    static_cast<SessionImpl*>(session)->onRefer(*message);
}

void SessionImpl::closeHandler(int error, sip_msg const* message, void* session)
{
    static_cast<SessionImpl*>(session)->onClose(error, message);
}

void SessionImpl::postFromStack(std::function<void()> work)
{
    agent_->loop.post([alive = std::weak_ptr<SessionImpl*>(self_), work = std::move(work)] {
        const auto session = alive.lock();
        if (session && (*session)->state_ != SessionState::kClosed) {
            work();
        }
    });
}

void SessionImpl::learnDialog(sip_msg const& message)
{
    // In an answer the local end is From, in a request To. The tags of an incoming call are known from its INVITE.
    if (outgoing_ && !message.req) {
        dialogId_.localTag = text(message.from.tag);
        if (message.to.tag.p) {
            dialogId_.remoteTag = text(message.to.tag);
        }
    }
    if (const std::string contact = contactOf(message); !contact.empty()) {
        remoteContact_ = contact;
    }
}

void SessionImpl::learnIdentity(sip_msg const& message)
{
    auto const identity = assertedIdentityOf(headersOf(message));
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

void SessionImpl::applyMedia()
{
    auto const agreement = sdp_.agreement();
    if (!agreement.codec.empty()) {
        rtp_.apply(agreement);
    }
}

void SessionImpl::onProgress(sip_msg const& message)
{
    learnDialog(message);
    if (message.scode == 100) {
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
    learnDialog(message);
    learnIdentity(message);
    if (described) {
        applyMedia();
        postFromStack([this] { announceRemoteChange(); });
    }
    if (modification_) {
        postFromStack([this] { reissueModification(); });
    }
    return 0;
}

int SessionImpl::onAnswer(sip_msg const& message)
{
    bool const renegotiation = state_ == SessionState::kEstablished;
    bool const described = mbuf_get_left(message.mb) > 0;
    // An answer without a description is right where an earlier one (183) had it.
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
    if (observer_) {
        observer_->onEstablished(*this);
    }
}

void SessionImpl::onInfo(sip_msg const& message)
{
    const Content content = contentOf(message);
    (void)sip_treply(nullptr, agent_->stack, &message, 200, "OK");
    if (!observer_) {
        return;
    }
    if (!isDigitContent(content)) {
        observer_->onInfo(*this, content);
        return;
    }
    if (char const key = keyOf(content); std::string_view("0123456789*#ABCDabcd").find(key) != std::string_view::npos) {
        observer_->onDigit(*this, key);
    }
}

void SessionImpl::onRefer(sip_msg const& message)
{
    auto transfer = TransferImpl::read(agent_, message, sipsess_dialog(session_.get()), contactUser_);
    if (transfer && observer_) {
        observer_->onTransferRequested(*this, std::move(transfer));
    }
}

void SessionImpl::onClose(int error, sip_msg const* message)
{
    bool const redirected = message && message->scode >= 300 && message->scode < 400;
    if (redirected && redirection_ && followRedirection()) {
        return;
    }
    bool const wasEstablished = state_ == SessionState::kEstablished || state_ == SessionState::kAnswering;
    Closing closing;
    closing.reasonHeader = closingReason_;
    if (message && message->scode >= 300) {
        closing = {CloseCause::kRejected, message->scode, text(message->reason), {}, headersOf(*message)};
        closing.reasonHeader = closing.headers.value("Reason");
        if (wasEstablished) {
            closing.cause = message->scode == 408 ? CloseCause::kTimeout : CloseCause::kFailed;
        }
    } else if (error == ETIMEDOUT) {
        closing.cause = CloseCause::kTimeout;
        closing.status = 408;
        closing.text = "Request Timeout";
    } else if (error == ECONNRESET && !message) {
        closing.cause = wasEstablished || outgoing_ ? CloseCause::kRemoteHangUp : CloseCause::kCancelled;
    } else {
        closing.status = error == EPROTO || error == EBADMSG ? 488 : 503;
        closing.text = error ? errorText(error) : "no answer to be used";
    }
    end();
    auto const infos = std::move(infos_);
    const std::weak_ptr<SessionImpl*> alive = self_;
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
    (void)sip_treply(&transaction_, agent_->stack, invite_.get(), 487, "Request Terminated");
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
    const ResponseHandler done = std::move(pending.done);
    std::erase_if(infos_, [&pending](auto const& info) { return info.get() == &pending; });
    if (!done) {
        return;
    }
    done(message ? responseOf(*message) : Response{503, errorText(error), {}, {}});
}

void SessionImpl::onReferNotify(sip_msg const& message)
{
    (void)sip_treply(nullptr, agent_->stack, &message, 200, "OK");
    if (!referring_) {
        return;
    }
    const Response progress = parseStatusLine(remainingText(message.mb));
    if (progress.status) {
        referralStatus_ = progress.status;
    }
    const std::string state = headerValue(message, "Subscription-State");
    bool const terminated = equalsIgnoringCase(std::string_view(state).substr(0, 10), "terminated");
    bool const ended = referralStatus_ >= 200 || terminated;
    if (ended) {
        referring_ = false;
    }
    if (observer_ && (progress.status || ended)) {
        observer_->onTransferProgress(*this, referralStatus_ ? referralStatus_ : 503, progress.reason, ended);
    }
}

// The REFER was refused or not answered, or its notices ended without a final one.
void SessionImpl::onReferClosed(int error, sip_msg const* message)
{
    if (!referring_) {
        return;
    }
    referring_ = false;
    Response result{error == ETIMEDOUT ? 408 : 503, errorText(error), {}, {}};
    if (message && !message->req) {
        result = responseOf(*message);
    }
    if (observer_) {
        observer_->onTransferProgress(*this, result.status, result.reason, true);
    }
}

void SessionImpl::noteRefusedInvite(Response const& response)
{
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
    constexpr int kMostRedirections = 10;
    bool const calling = state_ == SessionState::kCalling || state_ == SessionState::kEarly;
    auto const contact = NameAddr::parse(response.headers.value("Contact"));
    std::string whyNot;
    if (!outgoing_ || !calling || redirections_ >= kMostRedirections || !contact ||
        !agent_->routeTo(request_.account, contact->uri.format(), whyNot)) {
        return false;
    }
    redirection_ = response;
    return true;
}

bool SessionImpl::followRedirection()
{
    const Response response = *redirection_;
    redirection_.reset();
    ++redirections_;
    const std::string contact = NameAddr::parse(response.headers.value("Contact"))->uri.format();
    std::string whyNot;
    auto const route = agent_->routeTo(request_.account, contact, whyNot);
    for (char const* name : {"Diversion", "History-Info"}) {
        for (auto const& value : response.headers.values(name)) {
            request_.headers.add(name, value);
        }
    }
    agent_->remove(*this);
    if (!route) {
        return false;
    }
    route_ = *route;
    dialogId_ = {};
    state_ = SessionState::kCalling;
    if (start() != 0) {
        return false;
    }
    if (observer_) {
        observer_->onRedirected(*this, contact, response);
    }
    return true;
}

void SessionImpl::noteRedirection(Response const& response)
{
    auto const contact = NameAddr::parse(response.headers.value("Contact"));
    bool const calling = state_ == SessionState::kCalling || state_ == SessionState::kEarly;
    if (observer_ && outgoing_ && calling && contact) {
        observer_->onRedirected(*this, contact->uri.format(), response);
    }
}

}  // namespace telephone::sip
