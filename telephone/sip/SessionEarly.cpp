// Responses before the answer, and their acknowledgement with PRACK (RFC 3262), of a session in both parts; the answer,
// which may have to wait for it.
#include <mutex>

#include "telephone/sip/SessionImpl.h"

namespace telephone::sip {

void SessionImpl::makeReliable()
{
    std::lock_guard guard(element_->loop());
    reliable_ = true;
}

bool SessionImpl::sendsReliably(bool described) const
{
    ReliableUse const use = element_->config().reliableResponses;
    bool const demanded = invitation_.headers.lists("Require", kReliableExtension);
    bool const supported = demanded || invitation_.headers.lists("Supported", kReliableExtension);
    return use != ReliableUse::kNone && supported &&
           (demanded || described || reliable_ || use == ReliableUse::kRequired);
}

Outcome<> SessionImpl::ring(Headers const& headers)
{
    std::lock_guard guard(element_->loop());
    return isIncomingPending() ? respondEarly({180, "Ringing", headers, {}}) : notWaitingForAnswer();
}

Outcome<> SessionImpl::progress(Headers const& headers)
{
    std::lock_guard guard(element_->loop());
    if (!isIncomingPending()) {
        return notWaitingForAnswer();
    }
    // The offer of a response needs an answer, for which only PRACK has room.
    if (offersInAnswer_ && !sendsReliably(true)) {
        return refuse(RefusalKind::kNotSupported, "a call without an offer cannot have early media");
    }
    Ref<mbuf> description;
    if (!sdp_.encode(description, offersInAnswer_)) {
        return noDescription();
    }
    auto const progressing = respondEarly({183, "Session Progress", headers, remainingText(description.get())});
    if (progressing && !offersInAnswer_) {
        applyMedia();
    }
    return progressing;
}

Outcome<> SessionImpl::respondEarly(EarlyResponse const& response)
{
    bool const reliably = sendsReliably(!response.description.empty());
    auto const sending = reliably ? earlyResponses_.send(response) : sendEarly(response);
    if (sending) {
        state_ = SessionState::kEarly;
    }
    return sending;
}

Outcome<> SessionImpl::sendEarly(EarlyResponse const& response)
{
    Ref<mbuf> description;
    if (!response.description.empty() && !fill(description, response.description)) {
        return noDescription();
    }
    return respond(static_cast<std::uint16_t>(response.status), response.reason.c_str(), description.get(),
                   response.headers);
}

Outcome<> SessionImpl::answer(Headers const& headers)
{
    std::lock_guard guard(element_->loop());
    if (!isIncomingPending()) {
        return notWaitingForAnswer();
    }
    // RFC 3262 section 3: not before the caller has acknowledged the description.
    if (earlyResponses_.isDescribing()) {
        dueAnswer_ = headers;
        state_ = SessionState::kAnswering;
        return {};
    }
    return sendAnswer(headers);
}

Outcome<> SessionImpl::sendAnswer(Headers const& headers)
{
    earlyResponses_.stop();
    Ref<mbuf> description;
    if (!described_ && !sdp_.encode(description, offersInAnswer_)) {
        return noDescription();
    }
    Headers all = headers;
    all.add(sessionTimer_.accept(invitation_.headers));
    auto const answered = respond(200, "OK", description.get(), all);
    if (answered) {
        state_ = SessionState::kAnswering;
        if (!offersInAnswer_) {
            applyMedia();
        }
    }
    return answered;
}

void SessionImpl::onPrack(sip_msg const& prack)
{
    bool const wasDescribing = earlyResponses_.isDescribing();
    sip_msg const& invite = invite_->request();
    if (!sip_dialog_rseq_valid(sipsess_dialog(session_.get()), &prack)) {
        element_->answer(prack, 500, "Server Internal Error");
        return;
    }
    if (!earlyResponses_.acknowledge(headerValue(prack, "RAck"), invite.cseq.num)) {
        element_->answer(prack, 481, "Call/Transaction Does Not Exist");
        return;
    }
    Content answer;
    if (!takeDescription(prack, wasDescribing && offersInAnswer_, answer)) {
        return;
    }
    described_ = described_ || wasDescribing;
    element_->answer(prack, 200, "OK", dialogHeaders(), answer);
    if (dueAnswer_ && described_) {
        element_->logRefusal(sendAnswer(*std::exchange(dueAnswer_, std::nullopt)));
    } else {
        earlyResponses_.sendNext();
    }
}

// PRACK brings the answer to our offer, or an offer of its own, which `answer` answers. False: neither can be used.
bool SessionImpl::takeDescription(sip_msg const& prack, bool answersOurs, Content& answer)
{
    if (!answersOurs) {
        bool const offers = mbuf_get_left(prack.mb) > 0;
        if (offers && !takeOffer(prack, answer)) {
            return false;
        }
        if (offers) {
            applyMedia();
        }
        return true;
    }
    if (sdp_.decode(prack.mb, false) != 0) {
        element_->answer(prack, 488, "Not Acceptable Here");
        failIncoming(488, "Not Acceptable Here", CloseCause::kFailed);
        return false;
    }
    offersInAnswer_ = false;
    applyMedia();
    return true;
}

// RFC 3262 section 3.
void SessionImpl::onPrackMissing()
{
    failIncoming(504, "Server Time-out", CloseCause::kTimeout);
}

// Refuses a call for a reason of its own, and says so to the observer.
void SessionImpl::failIncoming(int status, std::string const& reason, CloseCause cause)
{
    state_ = SessionState::kEarly;
    dueAnswer_.reset();
    reject(status, reason, {});
    if (observer_) {
        observer_->onClosed(*this, {cause, cause == CloseCause::kTimeout ? 408 : status, reason, {}, {}});
    }
}

}  // namespace telephone::sip
