// What the call control tells its subscribers. The event proxy implements it and writes each event as one text message;
// an application in the same process may implement it itself and subscribe directly.
//
// Events of one call arrive in order. The order of the declarations is binary interface and never changes.
#pragma once

#include <string>
#include <vector>

#include "platform/sfi/SfiTypes.h"

class __attribute__((visibility("default"))) CommunicationsServiceEventIfc
{
public:
    // `replacesDisplay` is never null; its texts are empty for a call that replaces none.
    virtual void callStateChange(std::string const& lineURI, int callID, sfiCallState state, sfiReason reason,
                                 sfiSendOptions sendOptions, std::string const& uri, std::string const& name,
                                 sfiReplacesDisplay* replacesDisplay, sfiResourcePriority priority,
                                 sfiPreemptionCause preemptionCause, std::string const& preemptionText,
                                 bool callbackFeatureAvailable, sfiAdditionalCallInfo info) = 0;
    virtual void registrationStateChange(std::string const& lineURI, int callID, bool registered,
                                         sfiRegistrationResult result) = 0;
    virtual void incomingCall(std::string const& lineURI, int callID, std::string const& uri, std::string const& name,
                              std::string const& alertURI, std::string const& infoParam, bool autoAnswer,
                              sfiCallType callType, std::string const& diversionURI, std::string const& diversionName,
                              sfiForwardReason diversionReason, bool zipAutoAnswer, sfiResourcePriority priority,
                              sfiAdditionalCallInfo info, bool isVideoCall) = 0;
    virtual void incomingPickupCall(std::string const& lineURI, int callID, std::string const& uri,
                                    std::string const& name) = 0;
    virtual void callHeld(std::string const& lineURI, int callID) = 0;
    virtual void callRetrieved(std::string const& lineURI, int callID, std::string const& uri, std::string const& name,
                               sfiAdditionalCallInfo info, bool connectedToMediaServer) = 0;
    virtual void featureSuccess(std::string const& lineURI, int callID, sfiFeature feature) = 0;
    virtual void featureFailed(std::string const& lineURI, int callID, sfiFeature feature,
                               sfiFeatureFailure failure) = 0;
    virtual void remoteEndpointDetailsChanged(std::string const& lineURI, int callID, std::string const& uri,
                                              std::string const& name, bool exitConf, bool jointCall) = 0;
    virtual void incomingCallMissed(std::string const& lineURI, int callID, std::string const& uri,
                                    std::string const& name, sfiReason reason, std::string const& diversionURI,
                                    std::string const& diversionName, sfiForwardReason diversionReason) = 0;
    virtual void callForwarded(std::string const& lineURI, int callID, std::string const& callingParty,
                               std::string const& callingPartyName, std::string const& newDestination,
                               sfiForwardReason reason) = 0;
    virtual void incomingAssociatedCall(std::string const& lineURI, int currentCallID, int newCallID) = 0;
    virtual void devicesChanged() = 0;
    virtual void messageWaiting(std::string const& lineURI, sfiMWIServiceType type, unsigned int newMessages,
                                unsigned int oldMessages, unsigned int newUrgentMessages,
                                unsigned int oldUrgentMessages, sfiMWIMessageReturnType returnType,
                                sfiMWIAvailableInfo availInfo, sfiMessagesWaiting messagesWaiting,
                                std::string const& voiceMailNumber) = 0;
    virtual void doNotDisturbSet(std::string const& deviceId, bool on) = 0;
    virtual void agentStateSet(std::string const& deviceId, std::string const& agentState) = 0;
    virtual void securityStatusChanged(std::string const& lineURI, int callID, sfiSecurityStatus status,
                                       std::vector<int>& callIDs, std::vector<std::string>& lineURIs) = 0;
    virtual void callRecordingStatus(std::string const& lineURI, int callID, std::string const& recorded) = 0;
    virtual void preemptionStatusChanged(std::string const& lineURI, int callID, sfiResourcePriority priority,
                                         sfiPreemptionCause cause, std::string const& reason) = 0;
    virtual void impactLevelChanged(std::string const& lineURI, int callID, sfiAdditionalCallInfo info) = 0;
    virtual void systemStatusChange(std::string const& status, std::string const& statusInfo) = 0;
    virtual void serverFeatureStatusChange(std::string const& lineURI, std::string const& status) = 0;
    virtual void b2buaCSTAResponse(std::string const& lineURI, bool success, std::string const& body) = 0;
    virtual void b2buaCSTAEventOrRequest(std::string const& lineURI, std::string const& body) = 0;
    virtual void conferenceStatusEvent(std::string const& lineURI, int callID, std::string const& xmlContent) = 0;
    virtual void callCompletionEvent(std::string const& lineURI, std::string const& uri, sfiCallCompletionType type,
                                     sfiCallCompletionState state, bool displayOutcome) = 0;
    virtual void callCompletionFailedEvent(std::string const& lineURI, std::string const& uri,
                                           sfiCallCompletionFailureType failure) = 0;
    virtual void bluetoothAudioStatusChanged(std::string const& lineURI, int callID, bool audioEnabled,
                                             bool audioGateway, bool inBandRinging) = 0;
    // Carries nothing and is not delivered.
    virtual void csCommunicationsServiceEvent(std::string const& unused) = 0;

protected:
    ~CommunicationsServiceEventIfc() = default;
};
