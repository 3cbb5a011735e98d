// Transfer: requested of the far end or by it, and the exchange of one session for another.
#include <utility>

#include "telephone/calls/Call.h"
#include "telephone/calls/LogComponent.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/Refusals.h"
#include "telephone/trace/TimerStep.h"

namespace telephone {

namespace {

constexpr char const* kBeingReplaced = "another call is replacing it already";

}  // namespace

Outcome<> Call::transfer(sfiFeature feature, std::string const& target, std::optional<sip::Replaces> const& replaces)
{
    if (!isEstablished() || referring_) {
        return cannot("be transferred", referring_ ? "it is being transferred already" : "it is not connected");
    }
    if (auto asked = session_->transfer(target, replaces); !asked) {
        return asked;
    }
    transferFeature_ = feature;
    referring_ = true;
    transferTimer_.start(kTransferTime, [this] {
        timerRanOut(PhoneTimer::kTransferSilent);
        finishTransfer(408);
    });
    beginTransferring();
    return {};
}

void Call::beginTransferring()
{
    enter(sfiCallStateTransferring);
}

void Call::endTransferring()
{
    transferTimer_.cancel();
    if (now_.state == sfiCallStateTransferring) {
        enter(settledState());
    }
}

void Call::onTransferProgress(sip::Session& session, int status, std::string const& reason, bool ended)
{
    if (&session != session_.get() || !referring_) {
        return;
    }
    log(kLogInfo, kComponent, "call {}: the transfer reports {} {}", id(), status, reason);
    if (ended) {
        finishTransfer(status);
    }
}

void Call::finishTransfer(int status)
{
    referring_ = false;
    transferTimer_.cancel();
    if (status < 300) {
        postFeatureSuccess(transferFeature_);
    } else {
        postFeatureFailed(transferFeature_, featureFailureOf(status));
    }
    host_.transferEnded(*this, status);
}

void Call::onTransferRequested(sip::Session& session, std::unique_ptr<sip::Transfer> transfer)
{
    if (&session == session_.get()) {
        host_.transferRequested(*this, std::move(transfer));
    }
}

Outcome<> Call::replaceWithCall(sip::UserAgent& agent, sip::CallRequest const& request,
                                std::unique_ptr<sip::Transfer> transfer)
{
    if (replacement_) {
        return cannot("be replaced", kBeingReplaced);
    }
    sip::CallRequest held = request;
    if (now_.held) {
        held.direction = sip::Direction::kSendOnly;
    }
    auto session = agent.call(held, *this);
    if (!session) {
        return tl::unexpected(session.error());
    }
    replacement_ = std::move(*session);
    transferHere_ = std::move(transfer);
    return {};
}

Outcome<> Call::replaceWith(std::unique_ptr<sip::Session> session)
{
    if (replacement_) {
        return cannot("be replaced", kBeingReplaced);
    }
    replacement_ = std::move(session);
    replacement_->setObserver(this);
    auto answered = replacement_->answer();
    if (!answered) {
        replacement_.reset();
    }
    return answered;
}

void Call::exchangeSessions()
{
    audio_.attach(nullptr);
    std::unique_ptr<sip::Session> const old = std::exchange(session_, std::move(replacement_));
    if (old) {
        old->setObserver(nullptr);
        old->hangUp();
    }
    audio_.attach(&session_->audio());
    failPendingChanges();
    if (transferHere_) {
        transferHere_->notify(200, "OK");
    }
    transferHere_.reset();
    referring_ = false;
    established_ = true;
    // A held call stays held with its new party.
    if (now_.held && session_->localDirection() == sip::Direction::kSendReceive) {
        auto const held = beginChange(MediaChange::kRenew, sip::Direction::kSendOnly, sfiFeatureHold, {});
        reportIfRefused(kComponent, held);
    }
    heldHere_ = now_.held;
    update([this](CallSnapshot& now) {
        setRemote(session_->remoteParty());
        now.heldByRemote = session_->isHeldByRemote();
    });
    events_.remoteDetails(now_, false);
    enter(settledState());
}

}  // namespace telephone
