// Requests in the dialog of a session that the stack does not know: UPDATE (RFC 3311).
#include "telephone/sip/SessionImpl.h"

namespace telephone::sip {

namespace {

constexpr unsigned kLongestRetryAfter = 10;  // seconds (RFC 3311 section 5.2)

}  // namespace

bool SessionImpl::takeRequest(sip_msg const& request)
{
    if (!session_ || !sip_dialog_cmp(sipsess_dialog(session_.get()), &request)) {
        return false;
    }
    if (pl_strcmp(&request.met, "UPDATE") == 0) {
        onUpdate(request);
        return true;
    }
    return false;
}

// Of a response in the dialog that the stack does not send.
Headers SessionImpl::dialogHeaders() const
{
    return {{"Contact", "<" + localContact() + ">"}, {"Allow", kAllow}, {"Supported", kSupported}};
}

void SessionImpl::onUpdate(sip_msg const& update)
{
    sip_dialog* const dialog = sipsess_dialog(session_.get());
    if (!sip_dialog_rseq_valid(dialog, &update)) {
        element_->answer(update, 500, "Server Internal Error");
        return;
    }
    bool const offers = mbuf_get_left(update.mb) > 0;
    Content answer;
    if (offers && (refuseCrossingOffer(update) || !takeOffer(update, answer))) {
        return;
    }
    (void)sip_dialog_update(dialog, &update);
    element_->answer(update, 200, "OK", dialogHeaders(), answer);
    learnDialog(update);
    learnIdentity(update);
    if (offers) {
        applyMedia();
        announceRemoteChange();
    }
}

// RFC 3311 section 5.2: the offer crosses one of ours, or comes before our answer to an earlier one. True: refused.
bool SessionImpl::refuseCrossingOffer(sip_msg const& update)
{
    bool const isOffering = offerUnanswered_ || (state_ == SessionState::kAnswering && offersInAnswer_);
    bool const isCalling = outgoing_ && state_ != SessionState::kEstablished && !sdp_.isAgreed();
    if (directionBefore_ || isOffering || isCalling) {
        element_->answer(update, 491, "Request Pending");
        return true;
    }
    if (isIncomingPending()) {
        std::string const seconds = std::to_string(rand_u32() % (kLongestRetryAfter + 1));
        element_->answer(update, 500, "Server Internal Error", {{"Retry-After", seconds}});
        return true;
    }
    return false;
}

// Reads an offer and writes our answer to it. False: the offer is unusable, which has refused the request.
bool SessionImpl::takeOffer(sip_msg const& request, Content& answer)
{
    Ref<mbuf> description;
    if (sdp_.decode(request.mb, true) != 0 || !sdp_.encode(description, false)) {
        element_->answer(request, 488, "Not Acceptable Here");
        return false;
    }
    answer = {kSdpType, remainingText(description.get())};
    return true;
}

}  // namespace telephone::sip
