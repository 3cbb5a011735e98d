#include "telephone/calls/Call.h"

#include <algorithm>
#include <utility>

#include "telephone/calls/LogComponent.h"
#include "telephone/framework/Log.h"
#include "telephone/time/SteadyClock.h"

namespace telephone {

namespace {

constexpr char const* kNotRinging = "it is not ringing here";

}  // namespace

Call::Call(Surroundings const& surroundings, int callID, LineAddress line, bool incoming,
           std::unique_ptr<sip::AudioSource> voice)
    : host_(surroundings.host)
    , events_(surroundings.post)
    , reinviteTimeout_(surroundings.reinviteTimeout)
    , audio_(std::move(voice))
    , transferTimer_(surroundings.loop)
    , changeTimer_(surroundings.loop)
{
    now_.callID = callID;
    now_.line = std::move(line);
    now_.incoming = incoming;
    now_.began = now_.since = wallTime();
}

Call::~Call()
{
    dropSession();
}

void Call::enter(sfiCallState state, sfiReason reason)
{
    if (now_.state == state && now_.reason == reason) {
        return;
    }
    update([state, reason](CallSnapshot& now) {
        now.state = state;
        now.reason = reason;
    });
    postStateChange();
}

sfiCallState Call::settledState() const
{
    if (heldHere_) {
        return now_.heldByRemote ? sfiCallStateHeldByBoth : sfiCallStateHeld;
    }
    if (now_.heldByRemote) {
        return sfiCallStateRemotelyHeld;
    }
    return now_.inConference ? sfiCallStateConference : sfiCallStateConnected;
}

void Call::updateVoice()
{
    bool const speaks = established_ && !now_.held && !now_.ended();
    audio_.setVoice(speaks && !muted_, speaks);
}

void Call::setMuted(bool muted)
{
    muted_ = muted;
    updateVoice();
}

void Call::setRemote(sip::NameAddr const& party)
{
    std::string const uri = displayUri(party);
    if (uri.empty()) {
        return;
    }
    now_.remoteURI = uri;
    now_.remoteName = party.displayName;
}

void Call::dropSession()
{
    audio_.leave();
    audio_.attach(nullptr);
    replacement_.reset();
    session_.reset();
}

// --- outgoing

Outcome<> Call::dial(sip::UserAgent& agent, sip::CallRequest const& request)
{
    auto session = agent.call(request, *this);
    if (!session) {
        return tl::unexpected(session.error());
    }
    session_ = std::move(*session);
    audio_.attach(&session_->audio());
    return {};
}

void Call::announceDialling(std::string const& target)
{
    target_ = target;
    if (auto const party = sip::NameAddr::parse(target)) {
        setRemote(*party);
    }
    enter(sfiCallStateDialling);
}

void Call::onProgress(sip::Session& session, sip::Response const& response, bool)
{
    if (&session == replacement_.get()) {
        if (transferHere_) {
            transferHere_->notify(response.status, response.reason);
        }
        return;
    }
    if (now_.state == sfiCallStateDialling) {
        enter(sfiCallStateProceeding);
    }
    if (response.status == 180 && now_.state == sfiCallStateProceeding) {
        if (!diverted_) {
            setRemote(session.remoteParty());
        }
        enter(sfiCallStateRemoteRinging);
    }
}

// A redirection to the same user's registered address does not change the party; any other one does.
void Call::onRedirected(sip::Session& session, std::string const& contact, sip::Response const&)
{
    auto const party = sip::NameAddr::parse(contact);
    if (&session != session_.get() || !party || party->uri.user == sip::userOf(now_.remoteURI)) {
        return;
    }
    log(kLogInfo, kComponent, "call {} is forwarded to {}", id(), contact);
    diverted_ = true;
    update([this, &party](CallSnapshot&) { setRemote(*party); });
    events_.remoteDetails(now_, false);
}

void Call::onEstablished(sip::Session& session)
{
    if (&session == replacement_.get()) {
        exchangeSessions();
        return;
    }
    established_ = true;
    if (!diverted_) {
        setRemote(session.remoteParty());
    }
    now_.heldByRemote = session.isHeldByRemote();
    if (pickup_) {
        events_.pickedUp(now_);
    }
    enter(settledState());
    followSecurity();
    if (pickup_) {
        postFeatureSuccess(*pickup_);
    }
}

// --- incoming

void Call::offer(std::unique_ptr<sip::Session> session, sfiCallType type)
{
    session_ = std::move(session);
    session_->setObserver(this);
    audio_.attach(&session_->audio());
    sip::Invitation const& invitation = session_->invitation();
    setRemote(invitation.caller());
    events_.setInvitation(invitation);
    update([](CallSnapshot& now) { now.state = sfiCallStateIncoming; });
    events_.incoming(now_, invitation, type);
}

tl::unexpected<Refusal> Call::cannot(char const* operation, char const* why) const
{
    return refuse(RefusalKind::kWrongState, fmt::format("call {} cannot {}: {}", id(), operation, why));
}

Outcome<> Call::ring()
{
    if (now_.state == sfiCallStateRinging || now_.state == sfiCallStateAccepted) {
        return {};
    }
    if (now_.state != sfiCallStateIncoming) {
        return cannot("ring", "it is not offered to this telephone");
    }
    auto rung = session_->ring();
    if (rung) {
        enter(sfiCallStateRinging);
    }
    return rung;
}

Outcome<> Call::answer()
{
    if (!now_.alerting()) {
        return cannot("be answered", kNotRinging);
    }
    if (answering_) {
        return {};
    }
    auto answered = session_->answer();
    answering_ = answered.has_value();
    return answered;
}

Outcome<> Call::reject(StatusLine const& line)
{
    if (!now_.alerting() || answering_) {
        return cannot("be refused", kNotRinging);
    }
    session_->reject(line.status, line.text);
    end({sfiCallStateIdle, sfiReasonRefused});
    return {};
}

Outcome<> Call::redirect(std::string const& contact, sfiForwardReason reason)
{
    if (!now_.alerting()) {
        return cannot("be deflected", kNotRinging);
    }
    if (answering_) {
        return cannot("be deflected", "it is being answered");
    }
    auto redirected = session_->redirect(contact, diversionReasonOf(reason));
    if (redirected) {
        end({sfiCallStateIdle, sfiReasonForwarded});
    }
    return redirected;
}

// --- the end

void Call::clear(CSTAEventCause cause)
{
    if (now_.alerting() && reject(statusOf(cause))) {
        return;
    }
    bool const answered = established_;
    if (session_) {
        session_->setObserver(nullptr);
        session_->hangUp(reasonHeaderOf(cause));
    }
    end({sfiCallStateIdle, answered || now_.incoming ? sfiReasonNormal : sfiReasonCancelled});
}

void Call::end(Ending const& ending)
{
    if (std::exchange(over_, true)) {
        return;
    }
    transferTimer_.cancel();
    changeTimer_.cancel();
    if (session_) {
        session_->setObserver(nullptr);
    }
    dropSession();
    transferHere_.reset();
    update([&ending](CallSnapshot& now) {
        now.state = ending.state;
        now.reason = ending.reason;
        now.inConference = false;
    });
    postStateChange();
    failPendingChanges();
    host_.callEnded(*this);
}

void Call::onClosed(sip::Session& session, sip::Closing const& closing)
{
    if (&session == replacement_.get()) {
        replacementClosed(closing);
        return;
    }
    if (replacement_ && transferHere_) {
        // The transferor need not wait for the outcome (RFC 5589, 6): the new call decides.
        failPendingChanges();
        return;
    }
    if (replacement_) {
        // The replaced party has hung up before the new one confirmed the answer.
        exchangeSessions();
        return;
    }
    Ending ending = endingOf(closing);
    if (closing.cause == sip::CloseCause::kFailed) {
        log(kLogWarning, kComponent, "call {} has failed: {} {}", id(), closing.status, closing.text);
    }
    if (established_ && closing.cause == sip::CloseCause::kTimeout) {
        log(kLogWarning, kComponent, "call {} has ended: the far end no longer answers", id());
    } else if (closing.cause == sip::CloseCause::kAbandoned) {
        log(kLogWarning, kComponent, "call {} has ended: {}", id(), closing.text);
    }
    if (now_.state == sfiCallStateTransferring && closing.cause == sip::CloseCause::kRemoteHangUp) {
        ending = {sfiCallStateIdle, sfiReasonTransferred};
    }
    if (now_.alerting() && !answering_ && ending.reason == sfiReasonCancelled) {
        events_.missed(now_, sfiReasonNoAnswer);
    }
    if (pickup_ && !established_) {
        postFeatureFailed(*pickup_, featureFailureOf(closing.status));
    }
    if (Preemption preemption = preemptionOf(closing.reasonHeader); preemption.cause != sfiPreemptionCauseNone) {
        log(kLogInfo, kComponent, "call {} is preempted: {}", id(), preemption.text);
        events_.preempted(now_, std::move(preemption));
    }
    if (referring_) {
        // The transferred party may end this call before it reports success.
        bool const transferred = ending.reason == sfiReasonTransferred;
        finishTransfer(transferred ? 200 : std::max(closing.status, 481));
    }
    end(ending);
}

void Call::replacementClosed(sip::Closing const& closing)
{
    Ending const ending = endingOf(closing);
    if (transferHere_) {
        transferHere_->notify(closing.status >= 300 ? closing.status : 487, closing.text);
    }
    transferHere_.reset();
    replacement_.reset();
    if (session_->state() == sip::SessionState::kClosed) {
        end(ending);
    }
}

// --- digits, INFO, identity

Outcome<> Call::sendDigits(std::string const& digits)
{
    return isEstablished() ? session_->sendDigits(digits) : cannot("take digits", "it is not connected");
}

void Call::onInfo(sip::Session& session, sip::Content const& content)
{
    if (&session == session_.get()) {
        host_.infoReceived(*this, content);
    }
}

void Call::onDigit(sip::Session&, char digit)
{
    log(kLogInfo, kComponent, "call {}: the far end sent the digit {}", id(), digit);
}

void Call::onPrecedence(sip::Session& session, std::string const& resourcePriority)
{
    if (&session == session_.get()) {
        events_.precedence(now_, resourcePriority);
    }
}

void Call::onRemoteIdentity(sip::Session& session, sip::NameAddr const& identity)
{
    if (&session != session_.get()) {
        return;
    }
    CallSnapshot const before = now_;
    update([this, &identity](CallSnapshot&) { setRemote(identity); });
    if (!(now_ == before) && isEstablished()) {
        events_.remoteDetails(now_, false);
    }
}

// --- events

sfiSendOptions Call::sendOptions() const
{
    if (!established_ || now_.ended() || !session_) {
        return sfiSendOptionsNone;
    }
    return session_->supportsTelephoneEvents() ? sfiSendOptionsEvents : sfiSendOptionsInfo;
}

void Call::postStateChange()
{
    events_.stateChange(now_, sendOptions(), host_.callBackPossible(*this));
}

void Call::postFeatureSuccess(sfiFeature feature)
{
    events_.featureSuccess(now_, feature);
}

void Call::postFeatureFailed(sfiFeature feature, sfiFeatureFailure failure)
{
    events_.featureFailed(now_, feature, failure);
}

}  // namespace telephone
