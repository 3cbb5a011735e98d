// Transfer: asked of the far end, asked by it, and the exchange of one session for another.
#include <utility>

#include "telephone/calls/Call.h"

namespace telephone {

bool Call::transfer(sfiFeature feature, std::string const& target, std::optional<sip::Replaces> const& replaces)
{
    if (!isEstablished() || referring_ || !session_->transfer(target, replaces)) {
        return false;
    }
    transferFeature_ = feature;
    referring_ = true;
    transferTimer_.start(kTransferTime, [this] { finishTransfer(408); });
    beginTransferring();
    return true;
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
    host_.log(sip::LogLevel::kInfo,
              "call " + std::to_string(id()) + ": transfer: " + std::to_string(status) + ' ' + reason);
    if (!ended) {
        return;
    }
    finishTransfer(status);
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

bool Call::replaceWithCall(sip::UserAgent& agent, sip::CallRequest const& request,
                           std::unique_ptr<sip::Transfer> transfer)
{
    if (replacement_) {
        return false;
    }
    sip::CallRequest held = request;
    if (now_.held) {
        held.direction = sip::Direction::kSendOnly;
    }
    auto session = agent.call(held, *this);
    if (!session) {
        host_.log(sip::LogLevel::kWarning, "call " + std::to_string(id()) + ": cannot be connected with " +
                                               request.target + ": " + session.error().reason);
        return false;
    }
    replacement_ = std::move(*session);
    transferHere_ = std::move(transfer);
    return true;
}

bool Call::replaceWith(std::unique_ptr<sip::Session> session)
{
    if (replacement_) {
        return false;
    }
    replacement_ = std::move(session);
    replacement_->setObserver(this);
    if (replacement_->answer()) {
        return true;
    }
    replacement_.reset();
    return false;
}

void Call::exchangeSessions()
{
    audio_.attach(nullptr);
    const std::unique_ptr<sip::Session> old = std::exchange(session_, std::move(replacement_));
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
    // A call that waits here goes on waiting with its new party.
    if (now_.held && session_->localDirection() == sip::Direction::kSendReceive) {
        beginChange(MediaChange::kRenew, sip::Direction::kSendOnly, sfiFeatureHold, {});
    }
    heldHere_ = now_.held;
    update([this](CallSnapshot& now) {
        setRemote(session_->remoteParty());
        now.heldByRemote = session_->isHeldByRemote();
    });
    postRemoteDetails(false);
    enter(settledState());
}

}  // namespace telephone
