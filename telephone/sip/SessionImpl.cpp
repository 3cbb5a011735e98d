#include "telephone/sip/SessionImpl.h"

#include <algorithm>
#include <cctype>
#include <mutex>

#include "telephone/sip/EventLoop.h"
#include "telephone/sip/InvitationReader.h"

namespace telephone::sip {

namespace {

constexpr std::string_view kKeys = "0123456789*#ABCD";
// Longer than the stack waits for an answer, so it only ends what the stack forgot.
constexpr std::chrono::seconds kModificationGuard{40};

Headers capabilities()
{
    return {{"Allow", kAllow}, {"Supported", kSupported}};
}

Headers joined(Headers first, Headers const& more)
{
    for (auto const& header : more) {
        first.add(header.name, header.value);
    }
    return first;
}

}  // namespace

bool Closing::answeredElsewhere() const
{
    return reasonHeader.find("cause=200") != std::string::npos;
}

SessionImpl::SessionImpl(std::shared_ptr<UserAgent::Impl> agent, CallRequest const& request, Route route,
                         SessionObserver& observer)
    : agent_(std::move(agent))
    , observer_(&observer)
    , outgoing_(true)
    , state_(SessionState::kCalling)
    , remoteParty_(NameAddr::parse("<" + route.target + ">").value_or(NameAddr{}))
    , contactUser_(route.contactUser)
    , ownUri_(route.fromUri)
    , request_(request)
    , route_(std::move(route))
    , rtp_(agent_->clock, agent_->address)
    , sdp_(agent_->address, rtp_.localPort(), agent_->config.codecs, agent_->config.telephoneEvents)
    , modificationGuard_(agent_->loop)
{
    Account const& account = request.account;
    ++agent_->livingSessions;
    makeCredentials(credentials_, account.authUser.empty() ? account.user : account.authUser, account.password);
    sdp_.setLocalDirection(request.direction);
    rtp_.onDigit([this](char key) {
        if (observer_) {
            observer_->onDigit(*this, key);
        }
    });
}

SessionImpl::SessionImpl(std::shared_ptr<UserAgent::Impl> agent, sip_msg const& invite)
    : agent_(std::move(agent))
    , outgoing_(false)
    , state_(SessionState::kIncoming)
    , invitation_(readInvitation(invite))
    , remoteParty_(invitation_.caller())
    , remoteContact_(contactOf(invite))
    , rtp_(agent_->clock, agent_->address)
    , sdp_(agent_->address, rtp_.localPort(), agent_->config.codecs, agent_->config.telephoneEvents)
    , modificationGuard_(agent_->loop)
{
    dialogId_ = {text(invite.callid), localTagOf(invite), text(invite.from.tag)};
    contactUser_ = text(invite.uri.user);
    if (contactUser_.empty()) {
        contactUser_ = agent_->config.name;
    }
    ownUri_ = invitation_.to.uri.formatAddressOfRecord();
    invite_.share(&invite);
    ++agent_->livingSessions;
    makeCredentials(credentials_, "", "");
    rtp_.onDigit([this](char key) {
        if (observer_) {
            observer_->onDigit(*this, key);
        }
    });
}

SessionImpl::~SessionImpl()
{
    std::lock_guard guard(agent_->loop);
    observer_ = nullptr;
    self_.reset();
    --agent_->livingSessions;
    if (!transaction_) {
        hangUp({});
        return;
    }
    (void)sip_treply(&transaction_, agent_->stack, invite_.get(), 480, "Temporarily Unavailable");
    end();
    releaseStack();
}

int SessionImpl::start()
{
    Ref<mbuf> description;
    if (!sdp_.encode(description, true)) {
        return ENOMEM;
    }
    Headers headers = capabilities();
    if (request_.replaces) {
        headers.add("Replaces", request_.replaces->format());
    }
    if (!request_.referredBy.empty()) {
        headers.add("Referred-By", request_.referredBy);
    }
    const std::string extra = joined(headers, request_.headers).format();
    char const* proxies[] = {route_.proxy.c_str()};
    int const error =
        sipsess_connect(session_.out(), agent_->sessionSocket.get(), route_.target.c_str(),
                        route_.fromName.empty() ? nullptr : route_.fromName.c_str(), route_.fromUri.c_str(),
                        contactUser_.c_str(), proxies, route_.proxy.empty() ? 0 : 1, kSdpType, description.get(),
                        answerChallenge, credentials_.get(), true, offerHandler, answerHandler, progressHandler,
                        establishedHandler, infoHandler, referHandler, closeHandler, this, "%s", extra.c_str());
    if (error) {
        return error;
    }
    dialogId_.callId = sip_dialog_callid(sipsess_dialog(session_.get()));
    agent_->add(dialogId_.callId, *this);
    return 0;
}

int SessionImpl::begin()
{
    agent_->add(dialogId_.callId, *this);
    auto const cancelled = [](void* session) { static_cast<SessionImpl*>(session)->onCancelledBeforeAnswer(); };
    if (sip_strans_alloc(&transaction_, agent_->stack, invite_.get(), cancelled, this) != 0) {
        return 500;
    }
    (void)sip_treply(&transaction_, agent_->stack, invite_.get(), 100, "Trying");
    if (remoteContact_.empty()) {
        return 400;
    }
    offered_ = mbuf_get_left(invite_.get()->mb) == 0;
    if (offered_) {
        return 0;
    }
    if (!msg_ctype_cmp(&invite_.get()->ctyp, "application", "sdp")) {
        return 415;
    }
    return sdp_.decode(invite_.get()->mb, true) == 0 ? 0 : 488;
}

void SessionImpl::setObserver(SessionObserver* observer)
{
    std::lock_guard guard(agent_->loop);
    observer_ = observer;
}

SessionState SessionImpl::state() const
{
    std::lock_guard guard(agent_->loop);
    return state_;
}

DialogId SessionImpl::dialogId() const
{
    std::lock_guard guard(agent_->loop);
    return dialogId_;
}

NameAddr SessionImpl::remoteParty() const
{
    std::lock_guard guard(agent_->loop);
    return remoteParty_;
}

std::string SessionImpl::remoteContact() const
{
    std::lock_guard guard(agent_->loop);
    return remoteContact_;
}

std::string SessionImpl::localContact() const
{
    bool const tcp = outgoing_ ? request_.account.transport == Transport::kTcp : invite_.get()->tp == SIP_TRANSP_TCP;
    return agent_->localUri(contactUser_, tcp ? SIP_TRANSP_TCP : SIP_TRANSP_UDP);
}

bool SessionImpl::supportsTelephoneEvents() const
{
    std::lock_guard guard(agent_->loop);
    return sdp_.isAgreed() && sdp_.agreement().eventPayloadType >= 0;
}

bool SessionImpl::isIncomingPending() const
{
    return !outgoing_ && (state_ == SessionState::kIncoming || state_ == SessionState::kEarly);
}

// The first answer of ours that makes a dialog: 180, 183 or 200.
int SessionImpl::accept(std::uint16_t status, char const* reason, mbuf* description, Headers const& headers)
{
    transaction_ = static_cast<sip_strans*>(mem_deref(transaction_));
    const std::string extra = joined(capabilities(), headers).format();
    int const error =
        sipsess_accept(session_.out(), agent_->sessionSocket.get(), invite_.get(), status, reason, contactUser_.c_str(),
                       kSdpType, description, answerChallenge, credentials_.get(), true, offerHandler, answerHandler,
                       establishedHandler, infoHandler, referHandler, closeHandler, this, "%s", extra.c_str());
    if (error) {
        (void)sip_treply(nullptr, agent_->stack, invite_.get(), 500, "Server Internal Error");
    }
    return error;
}

int SessionImpl::provisional(std::uint16_t status, char const* reason, mbuf* description, Headers const& headers)
{
    if (!session_) {
        return accept(status, reason, description, headers);
    }
    const std::string extra = joined(capabilities(), headers).format();
    return sipsess_progress(session_.get(), status, reason, description, "%s", extra.c_str());
}

bool SessionImpl::ring(Headers const& headers)
{
    std::lock_guard guard(agent_->loop);
    if (!isIncomingPending() || provisional(180, "Ringing", nullptr, headers) != 0) {
        return false;
    }
    state_ = SessionState::kEarly;
    return true;
}

bool SessionImpl::progress(Headers const& headers)
{
    std::lock_guard guard(agent_->loop);
    Ref<mbuf> description;
    if (!isIncomingPending() || offered_ || !sdp_.encode(description, false) ||
        provisional(183, "Session Progress", description.get(), headers) != 0) {
        return false;
    }
    state_ = SessionState::kEarly;
    applyMedia();
    return true;
}

bool SessionImpl::answer(Headers const& headers)
{
    std::lock_guard guard(agent_->loop);
    Ref<mbuf> description;
    if (!isIncomingPending() || !sdp_.encode(description, offered_)) {
        return false;
    }
    const std::string extra = joined(capabilities(), headers).format();
    int const error = session_ ? sipsess_answer(session_.get(), 200, "OK", description.get(), "%s", extra.c_str())
                               : accept(200, "OK", description.get(), headers);
    if (error) {
        return false;
    }
    state_ = SessionState::kAnswering;
    if (!offered_) {
        applyMedia();
    }
    return true;
}

bool SessionImpl::reject(int status, std::string const& reason, Headers const& headers)
{
    std::lock_guard guard(agent_->loop);
    if (!isIncomingPending() || status < 300 || status > 699) {
        return false;
    }
    const std::string tail = replyTail(headers, {});
    auto const code = static_cast<std::uint16_t>(status);
    int const error = session_ ? sipsess_reject(session_.get(), code, reason.c_str(), "%s", tail.c_str())
                               : sip_treplyf(&transaction_, nullptr, agent_->stack, invite_.get(), false, code,
                                             reason.c_str(), "%s", tail.c_str());
    end();
    releaseStack();
    return error == 0;
}

bool SessionImpl::redirect(std::string const& contact, std::string const& diversionReason)
{
    auto const target = Uri::parse(contact);
    if (!target) {
        return false;
    }
    Headers headers{{"Contact", "<" + target->format() + ">"}};
    if (!diversionReason.empty()) {
        auto const called = Uri::parse(invitation_.requestUri);
        const std::string party = called ? called->formatAddressOfRecord() : ownUri_;
        headers.add("Diversion", "<" + party + ">;reason=" + diversionReason);
    }
    return reject(302, "Moved Temporarily", headers);
}

void SessionImpl::hangUp(std::string const& reason)
{
    std::lock_guard guard(agent_->loop);
    if (state_ == SessionState::kClosed) {
        return;
    }
    if (isIncomingPending()) {
        (void)reject(486, "Busy Here", reason.empty() ? Headers{} : Headers{{"Reason", reason}});
        return;
    }
    if (!reason.empty()) {
        (void)sipsess_set_close_headers(session_.get(), "%s", Headers{{"Reason", reason}}.format().c_str());
    }
    end();
    releaseStack();
}

void SessionImpl::end()
{
    state_ = SessionState::kClosed;
    agent_->remove(*this);
    rtp_.stop();
    modificationGuard_.cancel();
    modification_.reset();
    queuedModifications_.clear();
    digitsByInfo_.clear();
}

void SessionImpl::releaseStack()
{
    transaction_ = static_cast<sip_strans*>(mem_deref(transaction_));
    session_.reset();
    referral_.reset();
    infos_.clear();
}

bool SessionImpl::modify(Direction direction)
{
    std::lock_guard guard(agent_->loop);
    if (state_ != SessionState::kEstablished) {
        return false;
    }
    if (modification_) {
        queuedModifications_.push_back(direction);
        return true;
    }
    return sendModification(direction);
}

bool SessionImpl::sendModification(Direction direction)
{
    const Direction before = sdp_.localDirection();
    sdp_.setLocalDirection(direction);
    Ref<mbuf> description;
    if (!sdp_.encode(description, true) || sipsess_modify(session_.get(), description.get()) != 0) {
        sdp_.setLocalDirection(before);
        return false;
    }
    modification_ = Modification{direction, before};
    modificationGuard_.start(kModificationGuard, [this] { finishModification(false, 408, "Request Timeout"); });
    return true;
}

void SessionImpl::finishModification(bool accepted, int status, std::string const& reason)
{
    if (!modification_) {
        return;
    }
    const Modification finished = *modification_;
    modification_.reset();
    modificationGuard_.cancel();
    if (!accepted) {
        sdp_.setLocalDirection(finished.before);
    }
    if (!queuedModifications_.empty()) {
        const Direction next = queuedModifications_.front();
        queuedModifications_.pop_front();
        (void)sendModification(next);
    }
    if (observer_) {
        observer_->onModified(*this, accepted, status, reason);
    }
}

// The far end's own re-INVITE made the stack forget ours, which waited to be sent again: it goes out after theirs.
void SessionImpl::reissueModification()
{
    if (!modification_ || state_ != SessionState::kEstablished) {
        return;
    }
    Ref<mbuf> description;
    if (!sdp_.encode(description, true) || sipsess_modify(session_.get(), description.get()) != 0) {
        finishModification(false, 500, "Server Internal Error");
    }
}

Direction SessionImpl::localDirection() const
{
    std::lock_guard guard(agent_->loop);
    return sdp_.localDirection();
}

bool SessionImpl::isHeldByRemote() const
{
    std::lock_guard guard(agent_->loop);
    return sdp_.isAgreed() && !sends(sdp_.remoteDirection());
}

bool SessionImpl::sendInfo(Content const& content, ResponseHandler done)
{
    std::lock_guard guard(agent_->loop);
    Ref<mbuf> body;
    if (state_ != SessionState::kEstablished || content.type.empty() || !fill(body, content.body)) {
        return false;
    }
    auto pending = std::make_unique<PendingInfo>(PendingInfo{this, std::move(done)});
    auto const answered = [](int error, sip_msg const* message, void* object) {
        auto* info = static_cast<PendingInfo*>(object);
        info->session->onInfoAnswered(*info, error, message);
    };
    if (sipsess_info(session_.get(), content.type.c_str(), body.get(), answered, pending.get()) != 0) {
        return false;
    }
    infos_.push_back(std::move(pending));
    return true;
}

bool SessionImpl::sendDigits(std::string const& digits, std::chrono::milliseconds duration)
{
    std::lock_guard guard(agent_->loop);
    std::string keys = digits;
    std::transform(keys.begin(), keys.end(), keys.begin(),
                   [](unsigned char key) { return static_cast<char>(std::toupper(key)); });
    if (keys.empty() || keys.find_first_not_of(kKeys) != std::string::npos) {
        return false;
    }
    if (rtp_.canSendDigits()) {
        rtp_.sendDigits(keys, duration);
        return true;
    }
    if (state_ != SessionState::kEstablished) {
        return false;
    }
    for (char const key : keys) {
        digitsByInfo_.push_back({key, duration});
    }
    if (!digitUnderWay_) {
        sendNextDigitByInfo();
    }
    return true;
}

void SessionImpl::sendNextDigitByInfo()
{
    digitUnderWay_ = false;
    if (digitsByInfo_.empty()) {
        return;
    }
    const DigitByInfo digit = digitsByInfo_.front();
    digitsByInfo_.pop_front();
    const std::string body =
        std::string("Signal=") + digit.key + "\r\nDuration=" + std::to_string(digit.duration.count()) + "\r\n";
    digitUnderWay_ = sendInfo({"application/dtmf-relay", body}, [this](Response const&) { sendNextDigitByInfo(); });
}

bool SessionImpl::transfer(std::string const& target, std::optional<Replaces> const& replaces)
{
    std::lock_guard guard(agent_->loop);
    if (state_ != SessionState::kEstablished || referring_ || !Uri::parse(target)) {
        return false;
    }
    std::string referTo = target;
    if (replaces) {
        referTo += (target.find('?') == std::string::npos ? "?" : "&") + std::string("Replaces=") +
                   escapeHeaderValue(replaces->format());
    }
    auto const notified = [](::sip*, sip_msg const* message, void* session) {
        static_cast<SessionImpl*>(session)->onReferNotify(*message);
    };
    auto const closed = [](int error, sip_msg const* message, sipevent_substate const*, void* session) {
        static_cast<SessionImpl*>(session)->onReferClosed(error, message);
    };
    int const error =
        sipevent_drefer(referral_.out(), agent_->eventSocket.get(), sipsess_dialog(session_.get()),
                        contactUser_.c_str(), answerChallenge, credentials_.get(), true, notified, closed, this,
                        "Refer-To: <%s>\r\nReferred-By: <%s>\r\n", referTo.c_str(), ownUri_.c_str());
    referring_ = error == 0;
    referralStatus_ = 0;
    return referring_;
}

}  // namespace telephone::sip
