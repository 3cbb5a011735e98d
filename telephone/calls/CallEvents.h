// Posts the events of one call to the applications, each built of copies because it is delivered later. Owned by its
// call; called with the phone lock held.
#pragma once

#include <string>

#include "platform/sfi/SfiTypes.h"
#include "telephone/calls/CallSnapshot.h"
#include "telephone/calls/EventPoster.h"
#include "telephone/calls/SipMeaning.h"
#include "telephone/sip/Session.h"

namespace telephone {

class CallEvents
{
public:
    explicit CallEvents(EventPoster const& post)
        : post_(post)
    {}

    // The dialog that the call replaces, and the parties to show for it.
    void setReplaces(sfiReplacesDisplay const& replaces) { replaces_ = replaces; }
    // Takes the priority and the diverting party of an incoming call.
    void setInvitation(sip::Invitation const& invitation);

    // The precedence of the call has changed, to the value of that Resource-Priority header.
    void precedence(CallSnapshot const& now, std::string const& resourcePriority);
    // The call is preempted; its last event says so, too.
    void preempted(CallSnapshot const& now, Preemption preemption);

    void stateChange(CallSnapshot const& now, sfiSendOptions options, bool callBackPossible) const;
    void incoming(CallSnapshot const& now, sip::Invitation const& invitation, sfiCallType type) const;
    void missed(CallSnapshot const& now, sfiReason reason) const;
    void pickedUp(CallSnapshot const& now) const;
    void held(CallSnapshot const& now) const;
    void retrieved(CallSnapshot const& now) const;
    void security(CallSnapshot const& now) const;
    void remoteDetails(CallSnapshot const& now, bool leftConference) const;
    void featureSuccess(CallSnapshot const& now, sfiFeature feature) const;
    void featureFailed(CallSnapshot const& now, sfiFeature feature, sfiFeatureFailure failure) const;

private:
    struct Diverter
    {
        std::string uri;
        std::string name;
        sfiForwardReason reason = sfiForwardReasonNone;
    };

    void preemptionStatus(CallSnapshot const& now) const;

    EventPoster const& post_;
    sfiReplacesDisplay replaces_{};
    Diverter diverter_;
    sfiResourcePriority priority_ = sfiResourcePriorityNone;
    Preemption preemption_;
};

}  // namespace telephone
