#include "telephone/calls/CallEvents.h"

#include <utility>
#include <vector>

#include "CommunicationsServiceEventIfc.h"

namespace telephone {

void CallEvents::setInvitation(sip::Invitation const& invitation)
{
    priority_ = priorityOf(invitation.resourcePriority);
    if (!invitation.diversions.empty()) {
        sip::Diversion const& latest = invitation.diversions.front();
        diverter_ = {displayUri(latest.party), latest.party.displayName, forwardReasonOf(latest.reason)};
    }
}

void CallEvents::stateChange(CallSnapshot const& now, sfiSendOptions options, bool callBackPossible) const
{
    post_([now, options, replaces = replaces_, priority = priority_, preemption = preemption_,
           callBackPossible](CommunicationsServiceEventIfc& event) mutable {
        event.callStateChange(now.line.lineURI, now.callID, now.state, now.reason, options, now.remoteURI,
                              now.remoteName, &replaces, priority, preemption.cause, preemption.text, callBackPossible,
                              sfiAdditionalCallInfo{});
    });
}

void CallEvents::precedence(CallSnapshot const& now, std::string const& resourcePriority)
{
    priority_ = priorityOf(resourcePriority);
    preemptionStatus(now);
}

void CallEvents::preempted(CallSnapshot const& now, Preemption preemption)
{
    preemption_ = std::move(preemption);
    preemptionStatus(now);
}

void CallEvents::preemptionStatus(CallSnapshot const& now) const
{
    post_([line = now.line.lineURI, callID = now.callID, priority = priority_,
           preemption = preemption_](CommunicationsServiceEventIfc& event) {
        event.preemptionStatusChanged(line, callID, priority, preemption.cause, preemption.text);
    });
}

void CallEvents::incoming(CallSnapshot const& now, sip::Invitation const& invitation, sfiCallType type) const
{
    post_([now, alert = alertInformationOf(invitation.alertInfo), automatic = invitation.answerAutomatically, type,
           diverter = diverter_, priority = priority_](CommunicationsServiceEventIfc& event) {
        event.incomingCall(now.line.lineURI, now.callID, now.remoteURI, now.remoteName, alert.uri, alert.infoParam,
                           automatic, type, diverter.uri, diverter.name, diverter.reason, automatic, priority,
                           sfiAdditionalCallInfo{}, false);
    });
}

void CallEvents::missed(CallSnapshot const& now, sfiReason reason) const
{
    post_([now, reason, diverter = diverter_](CommunicationsServiceEventIfc& event) {
        event.incomingCallMissed(now.line.lineURI, now.callID, now.remoteURI, now.remoteName, reason, diverter.uri,
                                 diverter.name, diverter.reason);
    });
}

void CallEvents::pickedUp(CallSnapshot const& now) const
{
    post_([now](CommunicationsServiceEventIfc& event) {
        event.incomingPickupCall(now.line.lineURI, now.callID, now.remoteURI, now.remoteName);
    });
}

void CallEvents::held(CallSnapshot const& now) const
{
    post_([line = now.line.lineURI, callID = now.callID](CommunicationsServiceEventIfc& event) {
        event.callHeld(line, callID);
    });
}

void CallEvents::retrieved(CallSnapshot const& now) const
{
    post_([now](CommunicationsServiceEventIfc& event) {
        event.callRetrieved(now.line.lineURI, now.callID, now.remoteURI, now.remoteName, sfiAdditionalCallInfo{},
                            false);
    });
}

void CallEvents::security(CallSnapshot const& now) const
{
    auto const status = now.secure ? sfiSecurityStatusSecure : sfiSecurityStatusPlain;
    post_([line = now.line.lineURI, callID = now.callID, status](CommunicationsServiceEventIfc& event) {
        std::vector<int> callIDs;
        std::vector<std::string> lines;
        event.securityStatusChanged(line, callID, status, callIDs, lines);
    });
}

void CallEvents::remoteDetails(CallSnapshot const& now, bool leftConference) const
{
    post_([now, leftConference](CommunicationsServiceEventIfc& event) {
        event.remoteEndpointDetailsChanged(now.line.lineURI, now.callID, now.remoteURI, now.remoteName, leftConference,
                                           now.inConference);
    });
}

void CallEvents::featureSuccess(CallSnapshot const& now, sfiFeature feature) const
{
    post_([line = now.line.lineURI, callID = now.callID, feature](CommunicationsServiceEventIfc& event) {
        event.featureSuccess(line, callID, feature);
    });
}

void CallEvents::featureFailed(CallSnapshot const& now, sfiFeature feature, sfiFeatureFailure failure) const
{
    post_([line = now.line.lineURI, callID = now.callID, feature, failure](CommunicationsServiceEventIfc& event) {
        event.featureFailed(line, callID, feature, failure);
    });
}

}  // namespace telephone
