// Hold, retrieve, conference: what changes the media of a call that is through.
#include <utility>

#include "CommunicationsServiceEventIfc.h"
#include "telephone/calls/Call.h"

namespace telephone {

bool Call::hold(sfiFeature feature, Done done)
{
    if (!isEstablished()) {
        return false;
    }
    if (now_.held) {
        if (!changes_.empty()) {
            changes_.back().done.push_back(std::move(done));
        } else if (done) {
            done(true);
        }
        return true;
    }
    return beginChange(MediaChange::kHold, sip::Direction::kSendOnly, feature, std::move(done));
}

bool Call::retrieve(sfiFeature feature, Done done)
{
    if (!isEstablished() || !now_.held) {
        return false;
    }
    return beginChange(MediaChange::kRetrieve, sip::Direction::kSendReceive, feature, std::move(done));
}

bool Call::renewMedia()
{
    return isEstablished() &&
           beginChange(MediaChange::kRenew, session_->localDirection(), sfiFeatureSecurityChange, {});
}

bool Call::beginChange(MediaChange change, sip::Direction direction, sfiFeature feature, Done done)
{
    if (!session_->modify(direction)) {
        return false;
    }
    changes_.push_back({change, feature, {std::move(done)}});
    if (changes_.size() == 1) {
        awaitChange();
    }
    if (change == MediaChange::kRenew) {
        return true;
    }
    bool const held = change == MediaChange::kHold;
    const CallSnapshot before = now_;
    now_.held = held;
    now_.heldForConsultation = held && feature == sfiFeatureConsultationHold;
    if (!held) {
        now_.heldByHand = false;
    }
    updateVoice();
    host_.callChanged(*this, before);
    return true;
}

// A far end that does not answer a re-INVITE is gone (RFC 3261 section 12.2.1.2).
void Call::awaitChange()
{
    changeTimer_.start(host_.reinviteTimeout(), [this] {
        host_.log(sip::LogLevel::kWarning, "call " + std::to_string(id()) + ": the far end does not answer any more");
        postFeatureFailed(changes_.front().feature, sfiFeatureFailureTimeout);
        end({sfiCallStateFailed, sfiReasonTimeout});
    });
}

void Call::onModified(sip::Session& session, bool accepted, int status, std::string const& reason)
{
    if (&session != session_.get() || changes_.empty()) {
        return;
    }
    const PendingChange change = std::move(changes_.front());
    changes_.pop_front();
    if (changes_.empty()) {
        changeTimer_.cancel();
    } else {
        awaitChange();
    }
    if (accepted) {
        changeAccepted(change);
    } else {
        host_.log(sip::LogLevel::kWarning, "call " + std::to_string(id()) + ": the far end refuses the change: " +
                                               std::to_string(status) + ' ' + reason);
        changeRefused(change, status);
    }
    for (Done const& done : change.done) {
        if (done) {
            done(accepted);
        }
    }
}

void Call::changeAccepted(PendingChange const& change)
{
    bool const transferring = now_.state == sfiCallStateTransferring;
    int const callID = id();
    const std::string line = now_.line.lineURI;
    switch (change.change) {
    case MediaChange::kHold:
        heldHere_ = true;
        if (!transferring) {
            update([this](CallSnapshot& now) { now.state = settledState(); });
        }
        host_.post([line, callID](CommunicationsServiceEventIfc& event) { event.callHeld(line, callID); });
        return;
    case MediaChange::kRetrieve: {
        heldHere_ = false;
        if (!transferring) {
            update([this](CallSnapshot& now) { now.state = settledState(); });
        }
        host_.post([line, callID, uri = now_.remoteURI, name = now_.remoteName](CommunicationsServiceEventIfc& event) {
            event.callRetrieved(line, callID, uri, name, sfiAdditionalCallInfo{}, false);
        });
        if (now_.state == sfiCallStateRemotelyHeld) {
            postStateChange();
        }
        return;
    }
    case MediaChange::kRenew:
        if (change.feature != sfiFeatureSecurityChange) {
            return;
        }
        host_.post([line, callID](CommunicationsServiceEventIfc& event) {
            std::vector<int> callIDs;
            std::vector<std::string> lines;
            event.securityStatusChanged(line, callID, sfiSecurityStatusPlain, callIDs, lines);
        });
        return;
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
    auto const pending = std::exchange(changes_, {});
    for (PendingChange const& change : pending) {
        for (Done const& done : change.done) {
            if (done) {
                done(false);
            }
        }
    }
}

void Call::onRemoteHold(sip::Session& session, bool held, sip::Direction)
{
    if (&session != session_.get() || now_.heldByRemote == held) {
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
    postRemoteDetails(true);
    if (now_.state != sfiCallStateTransferring) {
        enter(settledState());
    }
}

}  // namespace telephone
