// A call at one moment, as a plain value.
#pragma once

#include <chrono>
#include <string>

#include "platform/sfi/SfiTypes.h"
#include "telephone/calls/LineDirectory.h"

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
    bool heldForConsultation = false;  // held automatically for another call of the same line
    bool consultation = false;         // another call was held for this one
    bool inConference = false;
    bool secure = false;
    std::chrono::system_clock::time_point began;
    std::chrono::system_clock::time_point since;  // in this state

    // Over: the call id is free again.
    bool ended() const { return state == sfiCallStateIdle || state == sfiCallStateBusy || state == sfiCallStateFailed; }
    // Offered or ringing here.
    bool alerting() const
    {
        return state == sfiCallStateIncoming || state == sfiCallStateRinging || state == sfiCallStateAccepted;
    }
    // In conversation, or held by the far end alone.
    bool active() const
    {
        return state == sfiCallStateConnected || state == sfiCallStateRemotelyHeld || state == sfiCallStateConference;
    }

    bool operator==(CallSnapshot const&) const = default;
};

}  // namespace telephone
