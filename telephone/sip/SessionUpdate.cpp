// Requests in the dialog of a session that the stack does not know (UPDATE, RFC 3311), and how a session finds out that
// its far end is gone: the refreshes of its session timer (RFC 4028), and the audio that does not come.
#include <algorithm>
#include <mutex>

#include "telephone/sip/SessionImpl.h"
#include "telephone/trace/TimerStep.h"

namespace telephone::sip {

namespace {

using std::chrono::milliseconds;

constexpr unsigned kLongestRetryAfter = 10;  // seconds (RFC 3311 section 5.2)
constexpr milliseconds kUsualRetry{10000};   // of a refresh that was refused for now

// Before a request that crossed one of the far end's is repeated (RFC 3261 section 14.1).
milliseconds pauseAfterCrossing(bool ownsCallId)
{
    return milliseconds(10 * (ownsCallId ? 210 + rand_u32() % 191 : rand_u32() % 201));
}

}  // namespace

bool SessionImpl::takeRequest(sip_msg const& request)
{
    sip_dialog* const dialog = dialogOf(request);
    if (dialog == nullptr) {
        return false;
    }
    if (pl_strcmp(&request.met, "UPDATE") == 0) {
        onUpdate(request, dialog);
        return true;
    }
    if (pl_strcmp(&request.met, "PRACK") == 0 && invite_) {
        onPrack(request);
        return true;
    }
    return pl_strcmp(&request.met, "INVITE") == 0 && refuseBriefSession(request);
}

// The session's dialog, or an early one of its INVITE; null: the request is in neither.
sip_dialog* SessionImpl::dialogOf(sip_msg const& request) const
{
    sip_dialog* const own = session_ ? sipsess_dialog(session_.get()) : nullptr;
    return own && sip_dialog_cmp(own, &request) ? own : earlyDialogs_.find(request);
}

std::string SessionImpl::withCapabilities(Headers const& more) const
{
    return element_->capabilities().format() + more.format();
}

// Of a response in the dialog that the stack does not send.
Headers SessionImpl::dialogHeaders() const
{
    Headers headers{{"Contact", "<" + localContact() + ">"}};
    headers.add(element_->capabilities());
    return headers;
}

bool SessionImpl::refuseBriefSession(sip_msg const& request)
{
    if (!sessionTimer_.isTooBrief(headersOf(request))) {
        return false;
    }
    (void)sip_dialog_rseq_valid(sipsess_dialog(session_.get()), &request);
    element_->answer(request, 422, "Session Interval Too Small", SessionTimer::ofRefusal());
    return true;
}

void SessionImpl::onUpdate(sip_msg const& update, sip_dialog* dialog)
{
    if (!sip_dialog_rseq_valid(dialog, &update)) {
        element_->answer(update, 500, "Server Internal Error");
        return;
    }
    bool const offers = mbuf_get_left(update.mb) > 0;
    Content answer;
    if (refuseBriefSession(update)) {
        return;
    }
    if (offers && (refuseCrossingOffer(update) || !takeOffer(update, answer))) {
        return;
    }
    (void)sip_dialog_update(dialog, &update);
    Headers headers = dialogHeaders();
    if (state_ == SessionState::kEstablished) {
        headers.add(sessionTimer_.accept(headersOf(update)));
    }
    element_->answer(update, 200, "OK", headers, answer);
    learnDialog(update);
    learnIdentity(update);
    learnPrecedence(update);
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
    if (offerBefore_ || isOffering || isCalling) {
        element_->answer(update, 491, "Request Pending");
        return true;
    }
    if (isIncomingPending() && !described_) {
        std::string const later = std::to_string(rand_u32() % (kLongestRetryAfter + 1));
        element_->answer(update, 500, "Server Internal Error", {{"Retry-After", later}});
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

// --- refreshes of ours

Outcome<> SessionImpl::refresh()
{
    std::lock_guard guard(element_->loop());
    if (state_ != SessionState::kEstablished) {
        return notEstablished();
    }
    return remoteTakesUpdate_ ? refreshByUpdate() : refreshByInvite();
}

Outcome<> SessionImpl::refreshByInvite()
{
    // A change that is under way is a refresh, too.
    if (offerBefore_) {
        return {};
    }
    renewing_ = true;
    auto sending = sendModification({sdp_.localDirection(), std::nullopt});
    renewing_ = sending.has_value();
    return sending;
}

Outcome<> SessionImpl::refreshByUpdate()
{
    return ClientRequest::within(element_, sipsess_dialog(session_.get()), contactUser_, credentials_)
        .and_then([this](std::shared_ptr<ClientRequest> const& made) {
            if (update_) {
                update_->abandon();
            }
            update_ = made;
            return update_->send("UPDATE", withCapabilities(sessionTimer_.ofRequest()) + "Content-Length: 0\r\n\r\n",
                                 {}, [this](int error, sip_msg const* answer) { onRefreshed(error, answer); });
        });
}

void SessionImpl::onRefreshed(int error, sip_msg const* answer)
{
    if (answer && answer->scode < 300) {
        (void)sip_dialog_update(sipsess_dialog(session_.get()), answer);
        learnDialog(*answer);
        learnIdentity(*answer);
        sessionTimer_.accepted(headersOf(*answer));
    } else if (answer) {
        refreshRefused(answer->scode, headersOf(*answer));
    } else {
        refreshRefused(statusOf(error), {});
    }
}

// RFC 4028 section 10: only a far end without a trace of the call ends it at once; with any other the interval decides.
void SessionImpl::refreshRefused(int status, Headers const& headers)
{
    if (status == 408 || status == 481) {
        abandon(kNoAnswerToRefresh);
        return;
    }
    bool const knowsNoUpdate = (status == 405 || status == 501) && std::exchange(remoteTakesUpdate_, false);
    if (knowsNoUpdate || (status == 422 && sessionTimer_.lengthen(headers))) {
        element_->logRefusal(refresh());
        return;
    }
    milliseconds const later =
        headers.has("Retry-After") ? std::chrono::seconds(headers.number("Retry-After")) : kUsualRetry;
    sessionTimer_.refreshIn(status == 491 ? pauseAfterCrossing(outgoing_) : later);
}

// --- audio

// Audio is due while both ends send and receive; not on hold, where the far end may be silent for as long as it likes.
void SessionImpl::watchAudio()
{
    bool const isDue = state_ == SessionState::kEstablished && rtp_.direction() == Direction::kSendReceive &&
                       element_->config().audioTimeout > std::chrono::seconds(0);
    if (!isDue) {
        audioWatch_.cancel();
    } else if (!audioWatch_.isRunning()) {
        audioDueSince_ = tmr_jiffies();
        checkAudio();
    }
}

void SessionImpl::checkAudio()
{
    rtp_.catchUp();
    milliseconds const silence(tmr_jiffies() - std::max(rtp_.lastHeard(), audioDueSince_));
    milliseconds const limit = element_->config().audioTimeout;
    if (silence < limit) {
        audioWatch_.start(limit - silence, [this] { checkAudio(); });
        return;
    }
    timerRanOut(PhoneTimer::kAudioSilent);
    abandon("the far end sends no audio");
}

}  // namespace telephone::sip
