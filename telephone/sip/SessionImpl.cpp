#include "telephone/sip/SessionImpl.h"

#include <algorithm>
#include <cctype>

#include "telephone/sip/InvitationReader.h"
#include "telephone/trace/TimerStep.h"

namespace telephone::sip {

namespace {

constexpr std::string_view kKeys = "0123456789*#ABCD";
// Longer than the stack waits for an answer, so that it only ends re-INVITEs that the stack has dropped.
constexpr std::chrono::seconds kModificationGuard{40};
// Longer than the far end waits for an answer to its BYE or CANCEL (RFC 3261: 64 * T1).
constexpr std::chrono::seconds kSilenceEnd{40};

}  // namespace

Outcome<> notWaitingForAnswer()
{
    return refuse(RefusalKind::kWrongState, "the call is not waiting for an answer");
}

Outcome<> noDescription()
{
    return refuse(RefusalKind::kUnavailable, "the session description cannot be written");
}

Outcome<> notEstablished()
{
    return refuse(RefusalKind::kWrongState, "the call is not established");
}

bool Closing::answeredElsewhere() const
{
    return reasonHeader.find("cause=200") != std::string::npos;
}

SessionImpl::SessionImpl(std::shared_ptr<Element> element, CallRequest const& request, Route route,
                         SessionObserver& observer)
    : element_(std::move(element))
    , observer_(&observer)
    , outgoing_(true)
    , state_(SessionState::kCalling)
    , lineUser_(request.account.user)
    , remoteParty_(NameAddr::parse("<" + route.target + ">").value_or(NameAddr{}))
    , contactUser_(route.contactUser)
    , ownUri_(route.fromUri)
    , request_(request)
    , route_(std::move(route))
    , local_(route_.local)
    , rtp_(element_->clock(), local_)
    , sdp_(local_, rtp_.localPort(), element_->config().codecs, element_->config().telephoneEvents)
    , earlyResponses_(element_->loop(), {[this](EarlyResponse const& response) { return sendEarly(response); },
                                         [this] { onPrackMissing(); }})
    , modificationGuard_(element_->loop())
    , sessionTimer_(
          element_->loop(), element_->config().sessionExpires,
          {[this] { element_->logRefusal(refresh()); }, [this] { abandon("the far end does not refresh the call"); }})
    , audioWatch_(element_->loop())
    , silenceEnd_(element_->loop())
{
    makeCredentials(credentials_, request.account, element_->config().log);
    sdp_.setLocalDirection(request.direction);
    rtp_.onDigit([this](char key) { announceDigit(key); });
}

SessionImpl::SessionImpl(std::shared_ptr<Element> element, sip_msg const& invite)
    : element_(std::move(element))
    , outgoing_(false)
    , state_(SessionState::kIncoming)
    , lineUser_(userOf(text(invite.ruri)))
    , invitation_(readInvitation(invite, isFromServer(invite)))
    , dialogId_{text(invite.callid), localTagOf(invite), text(invite.from.tag)}
    , remoteParty_(invitation_.caller())
    , remoteContact_(contactOf(invite))
    , contactUser_(element_->contactUserFor(invite))
    , ownUri_(invitation_.to.uri.formatAddressOfRecord())
    , local_(element_->addressOf(sa_af(&invite.dst)))
    , rtp_(element_->clock(), local_)
    , sdp_(local_, rtp_.localPort(), element_->config().codecs, element_->config().telephoneEvents)
    , earlyResponses_(element_->loop(), {[this](EarlyResponse const& response) { return sendEarly(response); },
                                         [this] { onPrackMissing(); }})
    , modificationGuard_(element_->loop())
    , sessionTimer_(
          element_->loop(), element_->config().sessionExpires,
          {[this] { element_->logRefusal(refresh()); }, [this] { abandon("the far end does not refresh the call"); }})
    , audioWatch_(element_->loop())
    , silenceEnd_(element_->loop())
{
    resourcePriority_ = invitation_.resourcePriority;
    remoteTakesUpdate_ = invitation_.headers.lists("Allow", "UPDATE");
    invite_.emplace(element_, invite, handlerOf<&SessionImpl::onCancelledBeforeAnswer>, this);
    rtp_.onDigit([this](char key) { announceDigit(key); });
}

SessionImpl::~SessionImpl()
{
    std::lock_guard guard(element_->loop());
    observer_ = nullptr;
    self_.reset();
    if (invite_ && invite_->isOpen()) {
        reject(480, "Temporarily Unavailable", {});
    } else {
        hangUp({});
    }
    credentials_.reset();
}

// Keys in a message that others can read protect nothing.
Outcome<> SessionImpl::useEncryption(bool overTls)
{
    auto const wanted = element_->config().encryption;
    bool const possible = overTls || element_->config().keysWithoutTls;
    if (wanted == Encryption::kRequired && !possible) {
        return refuse(RefusalKind::kNotSupported, "encrypted audio is required, but its keys would travel without TLS");
    }
    sdp_.useEncryption(possible ? wanted : Encryption::kNone);
    return {};
}

Outcome<> SessionImpl::start()
{
    if (auto usable = useEncryption(route_.transport == SIP_TRANSP_TLS); !usable) {
        return usable;
    }
    Ref<mbuf> description;
    if (!sdp_.encode(description, true)) {
        return noDescription();
    }
    Headers headers;
    if (request_.replaces) {
        headers.add("Replaces", request_.replaces->format());
    }
    if (!request_.referredBy.empty()) {
        headers.add("Referred-By", request_.referredBy);
    }
    if (element_->config().reliableResponses == ReliableUse::kRequired) {
        headers.add("Require", kReliableExtension);
    }
    headers.add(sessionTimer_.ofRequest());
    std::string const extra = withCapabilities(headers) + request_.headers.format();
    auto proxies = route_.proxyTexts();
    int const error = sipsess_connect(
        session_.out(), element_->sessionSocket(), route_.target.c_str(), route_.fromNameOrNull(),
        route_.fromUri.c_str(), contactUser_.c_str(), proxies.data(), static_cast<std::uint32_t>(proxies.size()),
        kSdpType, description.get(), answerChallenge, credentials_.get(), true, handlerOf<&SessionImpl::onOffer>,
        handlerOf<&SessionImpl::onAnswer>, handlerOf<&SessionImpl::onProgress>, handlerOf<&SessionImpl::onEstablished>,
        handlerOf<&SessionImpl::onInfo>, handlerOf<&SessionImpl::onRefer>, handlerOf<&SessionImpl::onClose>, this, "%s",
        extra.c_str());
    if (!error) {
        dialogId_.callId = sip_dialog_callid(sipsess_dialog(session_.get()));
        element_->tap().add(dialogId_.callId, *this);
    }
    return element_->sentTo(route_, error, "INVITE to " + route_.target);
}

bool SessionImpl::begin()
{
    element_->tap().add(dialogId_.callId, *this);
    invite_->answer(100, "Trying");
    sip_msg const& invite = invite_->request();
    if (remoteContact_.empty()) {
        return refuseIncoming(400, "Missing Contact");
    }
    if (sessionTimer_.isTooBrief(invitation_.headers)) {
        return refuseIncoming(422, "Session Interval Too Small", SessionTimer::ofRefusal());
    }
    if (element_->config().reliableResponses == ReliableUse::kRequired && !sendsReliably(true)) {
        return refuseIncoming(421, "Extension Required", {{"Require", kReliableExtension}});
    }
    if (auto const usable = useEncryption(invite.tp == SIP_TRANSP_TLS); !usable) {
        return refuseIncoming(488, "Not Acceptable Here", warning(usable.error().reason));
    }
    offersInAnswer_ = mbuf_get_left(invite.mb) == 0;
    if (offersInAnswer_) {
        return true;
    }
    if (!msg_ctype_cmp(&invite.ctyp, "application", "sdp")) {
        return refuseIncoming(415, "Unsupported Media Type", {{"Accept", kSdpType}});
    }
    return sdp_.decode(invite.mb, true) == 0 || refuseIncoming(488, "Not Acceptable Here", warning(sdp_.objection()));
}

// RFC 3261 section 20.43.
Headers SessionImpl::warning(std::string const& objection) const
{
    if (objection.empty()) {
        return {};
    }
    element_->log(LogLevel::kWarning, "call from " + remoteParty_.uri.format() + " refused: " + objection);
    return {{"Warning", "399 " + element_->hostPort(local_, invite_->request().tp) + " \"" + objection + "\""}};
}

bool SessionImpl::isFromServer(sip_msg const& message) const
{
    return element_->lineServers().haveSent(message, lineUser_);
}

// Returns false.
bool SessionImpl::refuseIncoming(std::uint16_t status, char const* reason, Headers const& headers)
{
    reject(status, reason, headers);
    return false;
}

void SessionImpl::setObserver(SessionObserver* observer)
{
    std::lock_guard guard(element_->loop());
    observer_ = observer;
}

std::string SessionImpl::localContact() const
{
    sip_transp const transport = outgoing_ ? route_.transport : invite_->request().tp;
    return "sip:" + contactUser_ + "@" + element_->hostPort(local_, transport) + sip_transp_param(transport);
}

bool SessionImpl::supportsTelephoneEvents() const
{
    std::lock_guard guard(element_->loop());
    return sdp_.isAgreed() && sdp_.agreement().eventPayloadType >= 0;
}

bool SessionImpl::isIncomingPending() const
{
    return !outgoing_ && (state_ == SessionState::kIncoming || state_ == SessionState::kEarly);
}

// Our first response that creates a dialog: 180, 183 or 200.
Outcome<> SessionImpl::accept(std::uint16_t status, char const* reason, mbuf* description, Headers const& headers)
{
    invite_->handOver();
    sip_msg const& invite = invite_->request();
    int const error = sipsess_accept(
        session_.out(), element_->sessionSocket(), &invite, status, reason, contactUser_.c_str(), kSdpType, description,
        answerChallenge, nullptr, false, handlerOf<&SessionImpl::onOffer>, handlerOf<&SessionImpl::onAnswer>,
        handlerOf<&SessionImpl::onEstablished>, handlerOf<&SessionImpl::onInfo>, handlerOf<&SessionImpl::onRefer>,
        handlerOf<&SessionImpl::onClose>, this, "%s", withCapabilities(headers).c_str());
    if (error) {
        element_->answer(invite, 500, "Server Internal Error");
    }
    return sent(error, std::to_string(status) + " " + reason);
}

Outcome<> SessionImpl::respond(std::uint16_t status, char const* reason, mbuf* description, Headers const& headers)
{
    if (!session_) {
        return accept(status, reason, description, headers);
    }
    auto const send = status < 200 ? sipsess_progress : sipsess_answer;
    return sent(send(session_.get(), status, reason, description, "%s", withCapabilities(headers).c_str()),
                std::to_string(status) + " " + reason);
}

void SessionImpl::reject(int status, std::string const& reason, Headers const& headers)
{
    std::lock_guard guard(element_->loop());
    if (!isIncomingPending() || status < 300 || status > 699) {
        element_->log(LogLevel::kWarning, "Rejection of a call with " + std::to_string(status) + " is ignored");
        return;
    }
    if (session_) {
        (void)sipsess_reject(session_.get(), static_cast<std::uint16_t>(status), reason.c_str(), "%s",
                             replyTail(headers, {}).c_str());
    } else {
        invite_->answer(status, reason, headers);
    }
    end();
    releaseStack();
}

Outcome<> SessionImpl::redirect(std::string const& contact, std::string const& diversionReason)
{
    std::lock_guard guard(element_->loop());
    auto const target = Uri::parse(contact);
    if (!target) {
        return refuse(RefusalKind::kBadInput, "\"" + contact + "\" is not a URI");
    }
    if (!isIncomingPending()) {
        return notWaitingForAnswer();
    }
    Headers headers{{"Contact", "<" + target->format() + ">"}};
    if (!diversionReason.empty()) {
        auto const called = Uri::parse(invitation_.requestUri);
        std::string const party = called ? called->formatAddressOfRecord() : ownUri_;
        headers.add("Diversion", "<" + party + ">;reason=" + diversionReason);
    }
    reject(302, "Moved Temporarily", headers);
    return {};
}

void SessionImpl::hangUp(std::string const& reason)
{
    std::lock_guard guard(element_->loop());
    if (state_ == SessionState::kClosed) {
        return;
    }
    if (isIncomingPending()) {
        reject(486, "Busy Here", reason.empty() ? Headers{} : Headers{{"Reason", reason}});
        return;
    }
    if (!reason.empty()) {
        (void)sipsess_set_close_headers(session_.get(), "%s", Headers{{"Reason", reason}}.format().c_str());
    }
    end();
    releaseStack();
}

Outcome<> SessionImpl::fallSilent()
{
    std::lock_guard guard(element_->loop());
    if (state_ == SessionState::kClosed) {
        return refuse(RefusalKind::kWrongState, "the call has ended");
    }
    if ((outgoing_ ? route_.transport : invite_->request().tp) != SIP_TRANSP_UDP) {
        return refuse(RefusalKind::kNotSupported, "only a call over UDP can fall silent");
    }
    element_->tap().silence(*this);
    rtp_.stop();
    return {};
}

void SessionImpl::end()
{
    if (outgoing_) {
        element_->forkedAnswers().await(dialogId_.callId);
    }
    state_ = SessionState::kClosed;
    element_->tap().remove(*this);
    rtp_.stop();
    modificationGuard_.cancel();
    silenceEnd_.cancel();
    earlyDialogs_.clear();
    earlyResponses_.stop();
    sessionTimer_.stop();
    audioWatch_.cancel();
    dialogHeaders_.reset();
    if (update_) {
        update_->abandon();
        update_.reset();
    }
    offerBefore_.reset();
    queuedModifications_.clear();
    digitsByInfo_.clear();
}

// Ends a call whose far end is not there any more, and tells it so in case it is.
void SessionImpl::abandon(std::string const& why)
{
    Headers const reason{{"Reason", "SIP;cause=408;text=\"" + why + "\""}};
    (void)sipsess_set_close_headers(session_.get(), "%s", reason.format().c_str());
    end();
    releaseStack();
    if (observer_) {
        observer_->onClosed(*this, {CloseCause::kAbandoned, 408, why, {}, {}});
    }
}

void SessionImpl::releaseStack()
{
    if (invite_) {
        invite_->handOver();
    }
    session_.reset();
    referral_.reset();
    infos_.clear();
}

void SessionImpl::onEndIgnored()
{
    if (silenceEnd_.isRunning()) {
        return;
    }
    silenceEnd_.start(kSilenceEnd, [this] {
        end();
        if (observer_) {
            observer_->onClosed(*this, {CloseCause::kTimeout, 408, "Request Timeout", {}, {}});
        }
    });
}

Outcome<> SessionImpl::modify(Direction direction, std::optional<bool> encrypted)
{
    std::lock_guard guard(element_->loop());
    if (state_ != SessionState::kEstablished) {
        return notEstablished();
    }
    if (offerBefore_) {
        queuedModifications_.push_back({direction, encrypted});
        return {};
    }
    return sendModification({direction, encrypted});
}

Outcome<> SessionImpl::sendModification(Modification const& modification)
{
    auto const before = sdp_.nextOffer();
    sdp_.setLocalDirection(modification.direction);
    Outcome<> offered;
    if (modification.encrypted) {
        offered = sdp_.changeEncryption(*modification.encrypted);
    }
    if (offered) {
        offered = offer();
    }
    if (!offered) {
        sdp_.restore(before);
        return offered;
    }
    offerBefore_ = before;
    modificationGuard_.start(kModificationGuard, [this] {
        timerRanOut(PhoneTimer::kSessionChangeSilent);
        finishModification(false, 408, "Request Timeout");
    });
    return {};
}

// Sends a re-INVITE.
Outcome<> SessionImpl::offer()
{
    Ref<mbuf> description;
    if (!sdp_.encode(description, true)) {
        return noDescription();
    }
    return sent(sipsess_modify(session_.get(), description.get()), "re-INVITE");
}

void SessionImpl::finishModification(bool accepted, int status, std::string const& reason)
{
    if (!offerBefore_) {
        return;
    }
    auto const before = *offerBefore_;
    bool const isRefresh = std::exchange(renewing_, false);
    offerBefore_.reset();
    modificationGuard_.cancel();
    if (!accepted) {
        sdp_.restore(before);
    }
    if (!queuedModifications_.empty()) {
        Modification const next = queuedModifications_.front();
        queuedModifications_.pop_front();
        element_->logRefusal(sendModification(next));
    }
    if (isRefresh && !accepted) {
        refreshRefused(status, {});
    } else if (!isRefresh && observer_) {
        observer_->onModified(*this, accepted, status, reason);
    }
}

// A re-INVITE of the far end makes the stack drop ours while it waits to be repeated. It is sent again afterwards.
void SessionImpl::reissueModification()
{
    if (!offerBefore_ || state_ != SessionState::kEstablished) {
        return;
    }
    if (!offer()) {
        finishModification(false, 500, "Server Internal Error");
    }
}

Direction SessionImpl::localDirection() const
{
    std::lock_guard guard(element_->loop());
    return sdp_.localDirection();
}

bool SessionImpl::isHeldByRemote() const
{
    std::lock_guard guard(element_->loop());
    return sdp_.isAgreed() && !sends(sdp_.remoteDirection());
}

Outcome<> SessionImpl::sendInfo(Content const& content, ResponseHandler done)
{
    std::lock_guard guard(element_->loop());
    if (state_ != SessionState::kEstablished) {
        return notEstablished();
    }
    if (content.type.empty()) {
        return refuse(RefusalKind::kBadInput, "INFO needs a content type");
    }
    Ref<mbuf> body;
    if (!fill(body, content.body)) {
        return refuse(RefusalKind::kUnavailable, "there is no memory for INFO");
    }
    auto pending = std::make_unique<PendingInfo>(PendingInfo{this, std::move(done)});
    auto const answered = [](int error, sip_msg const* message, void* object) {
        auto* info = static_cast<PendingInfo*>(object);
        info->session->onInfoAnswered(*info, error, message);
    };
    auto const sending =
        sent(sipsess_info(session_.get(), content.type.c_str(), body.get(), answered, pending.get()), "INFO");
    if (sending) {
        infos_.push_back(std::move(pending));
    }
    return sending;
}

Outcome<> SessionImpl::sendDigits(std::string const& digits, std::chrono::milliseconds duration)
{
    std::lock_guard guard(element_->loop());
    std::string keys = digits;
    std::transform(keys.begin(), keys.end(), keys.begin(),
                   [](unsigned char key) { return static_cast<char>(std::toupper(key)); });
    if (keys.empty() || keys.find_first_not_of(kKeys) != std::string::npos) {
        return refuse(RefusalKind::kBadInput, "\"" + digits + "\" are not digits (0-9 * # A-D)");
    }
    if (rtp_.canSendDigits()) {
        rtp_.sendDigits(keys, duration);
        return {};
    }
    if (state_ != SessionState::kEstablished) {
        return notEstablished();
    }
    for (char const key : keys) {
        digitsByInfo_.push_back({key, duration});
    }
    if (!digitUnderWay_) {
        sendNextDigitByInfo();
    }
    return {};
}

void SessionImpl::sendNextDigitByInfo()
{
    digitUnderWay_ = false;
    if (digitsByInfo_.empty()) {
        return;
    }
    DigitByInfo const digit = digitsByInfo_.front();
    digitsByInfo_.pop_front();
    std::string const body =
        std::string("Signal=") + digit.key + "\r\nDuration=" + std::to_string(digit.duration.count()) + "\r\n";
    auto const sending = sendInfo({"application/dtmf-relay", body}, [this](Response const&) { sendNextDigitByInfo(); });
    digitUnderWay_ = sending.has_value();
    element_->logRefusal(sending);
}

Outcome<> SessionImpl::transfer(std::string const& target, std::optional<Replaces> const& replaces)
{
    std::lock_guard guard(element_->loop());
    if (state_ != SessionState::kEstablished) {
        return notEstablished();
    }
    if (referral_ && referral_->isRunning()) {
        return refuse(RefusalKind::kWrongState, "the call is being transferred already");
    }
    if (!Uri::parse(target)) {
        return refuse(RefusalKind::kBadInput, "\"" + target + "\" is not a URI");
    }
    std::string referTo = target;
    if (replaces) {
        referTo += (target.find('?') == std::string::npos ? "?" : "&") + std::string("Replaces=") +
                   escapeHeaderValue(replaces->format());
    }
    referral_.emplace(*element_, [this](int status, std::string const& reason, bool ended) {
        if (observer_) {
            observer_->onTransferProgress(*this, status, reason, ended);
        }
    });
    return referral_->start(sipsess_dialog(session_.get()), contactUser_, credentials_,
                            "Refer-To: <" + referTo + ">\r\nReferred-By: <" + ownUri_ + ">\r\n");
}

}  // namespace telephone::sip
