// What a call posts to the applications. Each event is built of values taken now, because it is delivered later.
#include "CommunicationsServiceEventIfc.h"
#include "telephone/calls/Call.h"

namespace telephone {

sfiSendOptions Call::sendOptions() const
{
    if (!established_ || now_.ended() || !session_) {
        return sfiSendOptionsNone;
    }
    return session_->supportsTelephoneEvents() ? sfiSendOptionsEvents : sfiSendOptionsInfo;
}

void Call::postStateChange()
{
    const sfiSendOptions options = sendOptions();
    bool const callBack = host_.callBackPossible(*this);
    host_.post([now = now_, options, replaces = replaces_, priority = priority_,
                callBack](CommunicationsServiceEventIfc& event) mutable {
        event.callStateChange(now.line.lineURI, now.callID, now.state, now.reason, options, now.remoteURI,
                              now.remoteName, &replaces, priority, sfiPreemptionCauseNone, {}, callBack,
                              sfiAdditionalCallInfo{});
    });
}

void Call::postIncoming(sfiCallType type)
{
    sip::Invitation const& invitation = session_->invitation();
    host_.post([now = now_, alert = alertInformationOf(invitation.alertInfo),
                automatic = invitation.answerAutomatically, type, diverted = divertedBy_,
                priority = priority_](CommunicationsServiceEventIfc& event) {
        event.incomingCall(now.line.lineURI, now.callID, now.remoteURI, now.remoteName, alert.uri, alert.infoParam,
                           automatic, type, diverted.uri, diverted.name, diverted.reason, automatic, priority,
                           sfiAdditionalCallInfo{}, false);
    });
}

void Call::postMissed(sfiReason reason)
{
    host_.post([now = now_, reason, diverted = divertedBy_](CommunicationsServiceEventIfc& event) {
        event.incomingCallMissed(now.line.lineURI, now.callID, now.remoteURI, now.remoteName, reason, diverted.uri,
                                 diverted.name, diverted.reason);
    });
}

void Call::postPickedUp()
{
    host_.post([now = now_](CommunicationsServiceEventIfc& event) {
        event.incomingPickupCall(now.line.lineURI, now.callID, now.remoteURI, now.remoteName);
    });
}

void Call::postRemoteDetails(bool leftConference)
{
    host_.post([now = now_, leftConference](CommunicationsServiceEventIfc& event) {
        event.remoteEndpointDetailsChanged(now.line.lineURI, now.callID, now.remoteURI, now.remoteName, leftConference,
                                           now.inConference);
    });
}

void Call::postFeatureSuccess(sfiFeature feature)
{
    host_.post([line = now_.line.lineURI, callID = id(), feature](CommunicationsServiceEventIfc& event) {
        event.featureSuccess(line, callID, feature);
    });
}

void Call::postFeatureFailed(sfiFeature feature, sfiFeatureFailure failure)
{
    host_.post([line = now_.line.lineURI, callID = id(), feature, failure](CommunicationsServiceEventIfc& event) {
        event.featureFailed(line, callID, feature, failure);
    });
}

}  // namespace telephone
