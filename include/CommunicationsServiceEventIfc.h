/// @file
/// What the call control tells its subscribers.
#pragma once

#include <string>
#include <vector>

#include "platform/sfi/SfiTypes.h"

/// The events of the telephone. The event proxy implements it and writes each event as one text message
/// (CommunicationsServiceEvents.h); an application in the same process may implement it itself and pass it to
/// CommunicationsServiceIfc::subscribe.
///
/// Thread: one of the telephone's, with no lock held, so that a receiver may call any operation of the service. Events
/// of one call arrive in order. References and pointers are valid during the call only. A receiver should not block and
/// must not throw.
///
/// Arguments that recur: `lineURI` is the identifier of the line, as requests name it; `callID` the number of the call;
/// `uri` and `name` the address and display name of the far end, empty when unknown.
///
/// The order of the declarations is binary interface and never changes.
class __attribute__((visibility("default"))) CommunicationsServiceEventIfc
{
public:
    /// A call has come into another state. sfiCallStateIdle, sfiCallStateBusy and sfiCallStateFailed end it.
    /// @param lineURI the line
    /// @param callID the call
    /// @param state its state now
    /// @param reason why
    /// @param sendOptions how digits can be sent from now on
    /// @param uri the far end
    /// @param name the far end
    /// @param replacesDisplay never null; its texts are empty for a call that replaces no other
    /// @param priority precedence of the call
    /// @param preemptionCause why it was preempted
    /// @param preemptionText the same as text for the display
    /// @param callbackFeatureAvailable whether a call-back can be set on the far end now
    /// @param info impact levels of the call
    virtual void callStateChange(std::string const& lineURI, int callID, sfiCallState state, sfiReason reason,
                                 sfiSendOptions sendOptions, std::string const& uri, std::string const& name,
                                 sfiReplacesDisplay* replacesDisplay, sfiResourcePriority priority,
                                 sfiPreemptionCause preemptionCause, std::string const& preemptionText,
                                 bool callbackFeatureAvailable, sfiAdditionalCallInfo info) = 0;
    /// A line has been registered or has lost its registration. Told once for each change of `result`.
    /// @param lineURI the line
    /// @param callID always 0: a registration belongs to no call
    /// @param registered whether calls can reach the line
    /// @param result why it changed
    virtual void registrationStateChange(std::string const& lineURI, int callID, bool registered,
                                         sfiRegistrationResult result) = 0;
    /// A call is offered. Its state events follow. CommunicationsServiceIfc::acceptCall lets it ring, unless the
    /// telephone does so by itself.
    /// @param lineURI the line
    /// @param callID the number that the telephone gave the call
    /// @param uri the caller
    /// @param name the caller
    /// @param alertURI address of the Alert-Info header
    /// @param infoParam parameter "info" of that header
    /// @param autoAnswer whether the caller asks for an automatic answer
    /// @param callType where the call comes from
    /// @param diversionURI who diverted the call; empty when nobody did
    /// @param diversionName who diverted the call
    /// @param diversionReason why
    /// @param zipAutoAnswer the same as `autoAnswer`, for the call view
    /// @param priority precedence of the call
    /// @param info impact levels of the call
    /// @param isVideoCall whether video is offered
    virtual void incomingCall(std::string const& lineURI, int callID, std::string const& uri, std::string const& name,
                              std::string const& alertURI, std::string const& infoParam, bool autoAnswer,
                              sfiCallType callType, std::string const& diversionURI, std::string const& diversionName,
                              sfiForwardReason diversionReason, bool zipAutoAnswer, sfiResourcePriority priority,
                              sfiAdditionalCallInfo info, bool isVideoCall) = 0;
    /// A call that rang at another telephone was picked up here. Told when the picked-up call is connected.
    virtual void incomingPickupCall(std::string const& lineURI, int callID, std::string const& uri,
                                    std::string const& name) = 0;
    /// A call is on hold by this telephone.
    virtual void callHeld(std::string const& lineURI, int callID) = 0;
    /// A call is back from hold.
    /// @param lineURI the line
    /// @param callID the call
    /// @param uri the far end
    /// @param name the far end
    /// @param info impact levels of the call
    /// @param connectedToMediaServer whether the far end is a media server
    virtual void callRetrieved(std::string const& lineURI, int callID, std::string const& uri, std::string const& name,
                               sfiAdditionalCallInfo info, bool connectedToMediaServer) = 0;
    /// A feature of a call has done its work.
    virtual void featureSuccess(std::string const& lineURI, int callID, sfiFeature feature) = 0;
    /// A feature of a call has failed. `callID` is 0 when the line has no call. The call itself goes on, unless a state
    /// event says otherwise.
    virtual void featureFailed(std::string const& lineURI, int callID, sfiFeature feature,
                               sfiFeatureFailure failure) = 0;
    /// The far end of a call is another party, or shows another name.
    /// @param lineURI the line
    /// @param callID the call
    /// @param uri the far end now
    /// @param name the far end now
    /// @param exitConf the call has left a conference
    /// @param jointCall the call is part of a conference
    virtual void remoteEndpointDetailsChanged(std::string const& lineURI, int callID, std::string const& uri,
                                              std::string const& name, bool exitConf, bool jointCall) = 0;
    /// An offered call ended before it was answered here, or do-not-disturb refused it.
    /// @param lineURI the line
    /// @param callID the call
    /// @param uri the caller
    /// @param name the caller
    /// @param reason why it ended
    /// @param diversionURI who diverted the call; empty when nobody did
    /// @param diversionName who diverted the call
    /// @param diversionReason why
    virtual void incomingCallMissed(std::string const& lineURI, int callID, std::string const& uri,
                                    std::string const& name, sfiReason reason, std::string const& diversionURI,
                                    std::string const& diversionName, sfiForwardReason diversionReason) = 0;
    /// An offered call was sent on by a forwarding rule, or deflected.
    /// @param lineURI the line
    /// @param callID the call
    /// @param callingParty address of the caller
    /// @param callingPartyName display name of the caller
    /// @param newDestination where the call goes
    /// @param reason the rule
    virtual void callForwarded(std::string const& lineURI, int callID, std::string const& callingParty,
                               std::string const& callingPartyName, std::string const& newDestination,
                               sfiForwardReason reason) = 0;
    /// A call is offered on a line that has one already. Told only after CommunicationsServiceIfc::setAssociatedCalls.
    virtual void incomingAssociatedCall(std::string const& lineURI, int currentCallID, int newCallID) = 0;
    /// The set of devices has changed: CommunicationsServiceIfc::getDevices answers anew.
    virtual void devicesChanged() = 0;
    /// The message counts of a mailbox have changed.
    /// @param lineURI the line whose mailbox it is
    /// @param type kind of the messages
    /// @param newMessages not listened to, urgent ones included
    /// @param oldMessages listened to, urgent ones included
    /// @param newUrgentMessages urgent ones of the new
    /// @param oldUrgentMessages urgent ones of the old
    /// @param returnType how the messages can be fetched
    /// @param availInfo how much is known
    /// @param messagesWaiting whether messages wait
    /// @param voiceMailNumber number of the mailbox; empty when there is none
    virtual void messageWaiting(std::string const& lineURI, sfiMWIServiceType type, unsigned int newMessages,
                                unsigned int oldMessages, unsigned int newUrgentMessages,
                                unsigned int oldUrgentMessages, sfiMWIMessageReturnType returnType,
                                sfiMWIAvailableInfo availInfo, sfiMessagesWaiting messagesWaiting,
                                std::string const& voiceMailNumber) = 0;
    /// Do-not-disturb was switched. `deviceId` is the line; the first line when the whole telephone is meant.
    virtual void doNotDisturbSet(std::string const& deviceId, bool on) = 0;
    /// The agent state was set. `deviceId` is the line; the first line when the whole telephone is meant.
    virtual void agentStateSet(std::string const& deviceId, std::string const& agentState) = 0;
    /// The security of a call, or the set of recorded calls, has changed.
    /// @param lineURI the line
    /// @param callID the call
    /// @param status security of its audio
    /// @param callIDs all calls that are being recorded now
    /// @param lineURIs their lines, in the same order
    virtual void securityStatusChanged(std::string const& lineURI, int callID, sfiSecurityStatus status,
                                       std::vector<int>& callIDs, std::vector<std::string>& lineURIs) = 0;
    /// The recording of a call was started or ended, or could not be started. `recorded` is "true" or "false".
    virtual void callRecordingStatus(std::string const& lineURI, int callID, std::string const& recorded) = 0;
    /// The precedence of a call has changed, or it was preempted. `reason` is a text for the display.
    virtual void preemptionStatusChanged(std::string const& lineURI, int callID, sfiResourcePriority priority,
                                         sfiPreemptionCause cause, std::string const& reason) = 0;
    /// The impact levels of a call have changed.
    virtual void impactLevelChanged(std::string const& lineURI, int callID, sfiAdditionalCallInfo info) = 0;
    /// A status of the user interface, as CommunicationsServiceIfc::systemStatus passed it on.
    virtual void systemStatusChange(std::string const& status, std::string const& statusInfo) = 0;
    /// The server-based features of a line came or went. `status` is "initialized", "finalized" or "failed".
    virtual void serverFeatureStatusChange(std::string const& lineURI, std::string const& status) = 0;
    /// The server's response to CommunicationsServiceIfc::SendCSTARequest. `success`: the server accepted the request;
    /// `body` may be empty.
    virtual void b2buaCSTAResponse(std::string const& lineURI, bool success, std::string const& body) = 0;
    /// A CSTA event or request of the server for a line. `body` is its document.
    virtual void b2buaCSTAEventOrRequest(std::string const& lineURI, std::string const& body) = 0;
    /// The members of a conference have changed; told for each call in it. `xmlContent` is a document of RFC 4575.
    virtual void conferenceStatusEvent(std::string const& lineURI, int callID, std::string const& xmlContent) = 0;
    /// A call-back has come into another state.
    /// @param lineURI the line that set it
    /// @param uri the party to be called back
    /// @param type the kind of call-back
    /// @param state its state now; cancelled and done end it
    /// @param displayOutcome whether the call view is to show it
    virtual void callCompletionEvent(std::string const& lineURI, std::string const& uri, sfiCallCompletionType type,
                                     sfiCallCompletionState state, bool displayOutcome) = 0;
    /// A call-back has failed and is over. `uri` is the party that was to be called back.
    virtual void callCompletionFailedEvent(std::string const& lineURI, std::string const& uri,
                                           sfiCallCompletionFailureType failure) = 0;
    /// The audio of a Bluetooth device was switched.
    /// @param lineURI the line of its calls
    /// @param callID its call
    /// @param audioEnabled whether audio flows
    /// @param audioGateway whether the device acts as gateway
    /// @param inBandRinging whether it rings by itself
    virtual void bluetoothAudioStatusChanged(std::string const& lineURI, int callID, bool audioEnabled,
                                             bool audioGateway, bool inBandRinging) = 0;
    /// Carries nothing and is not sent.
    virtual void csCommunicationsServiceEvent(std::string const& unused) = 0;

protected:
    /// Never deleted through this interface.
    ~CommunicationsServiceEventIfc() = default;
};
