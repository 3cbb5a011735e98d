#include "telephone/calls/Call.h"

#include <algorithm>
#include <utility>

#include "CommunicationsServiceEventIfc.h"

namespace telephone {

using sip::LogLevel;

std::string displayUri(sip::NameAddr const& party)
{
    return party.uri.host.empty() && party.uri.user.empty() ? std::string() : party.uri.formatAddressOfRecord();
}

Call::Call(CallHost& host, int callID, LineAddress line, bool incoming, std::unique_ptr<sip::AudioSource> voice)
    : host_(host)
    , audio_(std::move(voice))
    , transferTimer_(host.loop())
    , changeTimer_(host.loop())
{
    now_.callID = callID;
    now_.line = std::move(line);
    now_.incoming = incoming;
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
    const std::string uri = displayUri(party);
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

bool Call::dial(sip::UserAgent& agent, sip::CallRequest const& request, std::string& whyNot)
{
    auto session = agent.call(request, *this);
    if (!session) {
        whyNot = session.error().reason;
        return false;
    }
    session_ = std::move(*session);
    audio_.attach(&session_->audio());
    return true;
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

// A server that tells where its number is registered does not change the party; one that diverts the call does.
void Call::onRedirected(sip::Session& session, std::string const& contact, sip::Response const&)
{
    auto const party = sip::NameAddr::parse(contact);
    if (&session != session_.get() || !party || party->uri.user == sip::userOf(now_.remoteURI)) {
        return;
    }
    host_.log(LogLevel::kInfo, "call " + std::to_string(id()) + " is forwarded to " + contact);
    diverted_ = true;
    update([this, &party](CallSnapshot&) { setRemote(*party); });
    postRemoteDetails(false);
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
        postPickedUp();
    }
    enter(settledState());
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
    priority_ = priorityOf(invitation.resourcePriority);
    if (!invitation.diversions.empty()) {
        sip::Diversion const& latest = invitation.diversions.front();
        divertedBy_ = {displayUri(latest.party), latest.party.displayName, forwardReasonOf(latest.reason)};
    }
    update([](CallSnapshot& now) { now.state = sfiCallStateIncoming; });
    postIncoming(type);
}

bool Call::ring()
{
    if (now_.state == sfiCallStateRinging || now_.state == sfiCallStateAccepted) {
        return true;
    }
    if (now_.state != sfiCallStateIncoming || !session_->ring()) {
        return false;
    }
    enter(sfiCallStateRinging);
    return true;
}

bool Call::answer()
{
    if (!now_.alerting()) {
        return false;
    }
    answering_ = answering_ || session_->answer().has_value();
    return answering_;
}

bool Call::refuse(StatusLine const& line)
{
    if (!now_.alerting() || answering_) {
        return false;
    }
    session_->reject(line.status, line.text);
    end({sfiCallStateIdle, sfiReasonRefused});
    return true;
}

bool Call::redirect(std::string const& contact, sfiForwardReason reason)
{
    if (!now_.alerting() || answering_ || !session_->redirect(contact, diversionReasonOf(reason))) {
        return false;
    }
    end({sfiCallStateIdle, sfiReasonForwarded});
    return true;
}

// --- the end

void Call::clear(CSTAEventCause cause)
{
    const StatusLine line = statusOf(cause);
    if (now_.alerting() && refuse(line)) {
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
        if (transferHere_) {
            transferHere_->notify(closing.status >= 300 ? closing.status : 487, closing.text);
        }
        transferHere_.reset();
        replacement_.reset();
        return;
    }
    Ending ending = endingOf(closing);
    if (established_ && closing.cause == sip::CloseCause::kTimeout) {
        host_.log(LogLevel::kWarning, "call " + std::to_string(id()) + ": the far end is silent, the call is over");
    }
    if (now_.state == sfiCallStateTransferring && closing.cause == sip::CloseCause::kRemoteHangUp) {
        ending = {sfiCallStateIdle, sfiReasonTransferred};
    }
    if (now_.alerting() && !answering_ && ending.reason == sfiReasonCancelled) {
        postMissed(sfiReasonNoAnswer);
    }
    if (pickup_ && !established_) {
        postFeatureFailed(*pickup_, featureFailureOf(closing.status));
    }
    if (referring_) {
        // Who has been transferred may end this call before it says so.
        bool const transferred = ending.reason == sfiReasonTransferred;
        finishTransfer(transferred ? 200 : std::max(closing.status, 481));
    }
    end(ending);
}

// --- digits, INFO, identity

bool Call::sendDigits(std::string const& digits)
{
    return isEstablished() && session_->sendDigits(digits).has_value();
}

bool Call::sendInfo(sip::Content const& content, sip::ResponseHandler done)
{
    return isEstablished() && session_->sendInfo(content, std::move(done)).has_value();
}

void Call::onInfo(sip::Session& session, sip::Content const& content)
{
    if (&session == session_.get()) {
        host_.infoReceived(*this, content);
    }
}

void Call::onDigit(sip::Session&, char digit)
{
    host_.log(LogLevel::kInfo, "call " + std::to_string(id()) + ": the far end sent the digit " + digit);
}

void Call::onRemoteIdentity(sip::Session& session, sip::NameAddr const& identity)
{
    if (&session != session_.get()) {
        return;
    }
    const CallSnapshot before = now_;
    update([this, &identity](CallSnapshot&) { setRemote(identity); });
    if (!(now_ == before) && isEstablished()) {
        postRemoteDetails(false);
    }
}

}  // namespace telephone
