// Changes of the media of a connected call: hold, retrieve, conference.
#include <utility>

#include "telephone/calls/Call.h"
#include "telephone/calls/LogComponent.h"
#include "telephone/framework/Log.h"
#include "telephone/trace/TimerStep.h"

namespace telephone {

namespace {

constexpr char const* kNotConnected = "it is not connected";

}  // namespace

Outcome<> Call::hold(sfiFeature feature, Done done)
{
    if (!isEstablished()) {
        return cannot("be held", kNotConnected);
    }
    if (now_.held) {
        return {};
    }
    return beginChange(MediaChange::kHold, sip::Direction::kSendOnly, feature, std::move(done));
}

Outcome<> Call::retrieve(sfiFeature feature, Done done)
{
    if (!isEstablished() || !now_.held) {
        return cannot("be retrieved", "this telephone does not hold it");
    }
    return beginChange(MediaChange::kRetrieve, sip::Direction::kSendReceive, feature, std::move(done));
}

Outcome<> Call::changeSecurity(bool secure)
{
    if (!isEstablished()) {
        return cannot("be negotiated again", kNotConnected);
    }
    return beginChange(MediaChange::kRenew, session_->localDirection(), sfiFeatureSecurityChange, {}, secure)
        .map_error([&](Refusal refusal) {
            refusal.reason =
                fmt::format("call {} cannot be {}: {}", id(), secure ? "secured" : "made plain", refusal.reason);
            return refusal;
        });
}

Outcome<> Call::beginChange(MediaChange change, sip::Direction direction, sfiFeature feature, Done done,
                            std::optional<bool> encrypted)
{
    if (auto begun = session_->modify(direction, encrypted); !begun) {
        return begun;
    }
    changes_.push_back({change, feature, std::move(done)});
    if (changes_.size() == 1) {
        awaitChange();
    }
    if (change != MediaChange::kRenew) {
        noteHold(change == MediaChange::kHold, feature);
    }
    return {};
}

void Call::noteHold(bool held, sfiFeature feature)
{
    update([held, feature](CallSnapshot& now) {
        now.held = held;
        now.heldForConsultation = held && feature == sfiFeatureConsultationHold;
        now.heldByHand = held && now.heldByHand;
    });
}

// A far end that does not answer a re-INVITE is gone (RFC 3261 section 12.2.1.2).
void Call::awaitChange()
{
    changeTimer_.start(reinviteTimeout_, [this] {
        timerRanOut(PhoneTimer::kMediaChangeSilent);
        log(kLogWarning, kComponent, "call {}: the far end no longer answers", id());
        postFeatureFailed(changes_.front().feature, sfiFeatureFailureTimeout);
        end({sfiCallStateFailed, sfiReasonTimeout});
    });
}

void Call::onModified(sip::Session& session, bool accepted, int status, std::string const& reason)
{
    if (&session != session_.get() || changes_.empty()) {
        return;
    }
    PendingChange const change = std::move(changes_.front());
    changes_.pop_front();
    if (changes_.empty()) {
        changeTimer_.cancel();
    } else {
        awaitChange();
    }
    if (accepted) {
        if (change.feature != sfiFeatureSecurityChange) {
            followSecurity();
        }
        changeAccepted(change);
    } else {
        log(kLogWarning, kComponent, "call {}: the far end refuses the change: {} {}", id(), status, reason);
        changeRefused(change, status);
    }
    finish(change, accepted);
}

void Call::finish(PendingChange const& change, bool accepted)
{
    if (change.done) {
        change.done(accepted);
    }
}

void Call::changeAccepted(PendingChange const& change)
{
    switch (change.change) {
    case MediaChange::kHold:
        settle(true);
        events_.held(now_);
        return;
    case MediaChange::kRetrieve:
        settle(false);
        events_.retrieved(now_);
        if (now_.state == sfiCallStateRemotelyHeld) {
            postStateChange();
        }
        return;
    case MediaChange::kRenew:
        if (change.feature == sfiFeatureSecurityChange) {
            noteSecurity();
            events_.security(now_);
        }
        return;
    }
}

// Whether the call has begun or ceased to be encrypted.
bool Call::noteSecurity()
{
    bool const secure = session_->audio().isEncrypted();
    bool const changed = now_.secure != secure;
    update([secure](CallSnapshot& now) { now.secure = secure; });
    return changed;
}

void Call::followSecurity()
{
    if (noteSecurity()) {
        events_.security(now_);
    }
}

// The far end has agreed that the call is held, or is not.
void Call::settle(bool held)
{
    heldHere_ = held;
    if (now_.state != sfiCallStateTransferring) {
        update([this](CallSnapshot& now) { now.state = settledState(); });
    }
}

void Call::changeRefused(PendingChange const& change, int status)
{
    if (change.change != MediaChange::kRenew && changes_.empty()) {
        update([this](CallSnapshot& now) {
            now.held = heldHere_;
            now.heldForConsultation = heldHere_ && now.heldForConsultation;
        });
    }
    postFeatureFailed(change.feature, featureFailureOf(status));
}

void Call::failPendingChanges()
{
    changeTimer_.cancel();
    for (PendingChange const& change : std::exchange(changes_, {})) {
        finish(change, false);
    }
}

void Call::onRemoteHold(sip::Session& session, bool held, sip::Direction)
{
    if (&session != session_.get()) {
        return;
    }
    if (established_) {
        followSecurity();
    }
    if (now_.heldByRemote == held) {
        return;
    }
    update([this, held](CallSnapshot& now) {
        now.heldByRemote = held;
        if (established_ && now.state != sfiCallStateTransferring) {
            now.state = settledState();
        }
    });
    if (established_ && now_.state != sfiCallStateTransferring) {
        postStateChange();
    }
}

void Call::enterConference()
{
    update([](CallSnapshot& now) { now.inConference = true; });
    enter(settledState());
}

void Call::leaveConference()
{
    if (!now_.inConference) {
        return;
    }
    audio_.leave();
    update([](CallSnapshot& now) { now.inConference = false; });
    events_.remoteDetails(now_, true);
    if (now_.state != sfiCallStateTransferring) {
        enter(settledState());
    }
}

}  // namespace telephone
