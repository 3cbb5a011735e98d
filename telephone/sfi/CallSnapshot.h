// A call at one moment, as a plain value.
#pragma once

#include "LineDirectory.h"
#include "sfi/SfiTypes.h"

#include <string>

namespace telephone {

struct CallSnapshot
{
    int callID = 0;
    LineAddress line;
    sfiCallState state = sfiCallStateIdle;
    sfiReason reason = sfiReasonNormal;
    bool incoming = false;
    std::string remoteURI;
    std::string remoteName;
    bool held = false;  // by this telephone, or the hold is under way
    bool heldByRemote = false;
    bool heldByHand = false;           // an application or a key asked for the hold
    bool heldForConsultation = false;  // put on hold by itself for another call of the same line
    bool consultation = false;         // the call that another one was put on hold for
    bool inConference = false;
    bool secure = false;

    // Over: the call id is free again.
    bool ended() const { return state == sfiCallStateIdle || state == sfiCallStateBusy || state == sfiCallStateFailed; }
    // Offered or ringing here.
    bool alerting() const
    {
        return state == sfiCallStateIncoming || state == sfiCallStateRinging || state == sfiCallStateAccepted;
    }
    // Speaks, or would if the far end did not hold.
    bool active() const
    {
        return state == sfiCallStateConnected || state == sfiCallStateRemotelyHeld || state == sfiCallStateConference;
    }

    bool operator==(const CallSnapshot&) const = default;
};

// Follows every call: lines, lamps, recording. Called on any thread with the phone lock held; may call the engine, but
// no operation of the service that takes its team lock.
class CallObserver
{
public:
    virtual ~CallObserver() = default;

    // before: null for a call that is new. The last one of a call has `ended()`; its id may be used again at once.
    virtual void callChanged(const CallSnapshot& now, const CallSnapshot* before) = 0;
    virtual void registrationChanged(int /*lineNumber*/, bool /*registered*/) {}
    virtual void messageWaitingChanged(int /*lineNumber*/, const sfiMessageWaitingRecord&) {}
    virtual void microphoneMuteChanged(bool /*muted*/) {}
};

}  // namespace telephone
