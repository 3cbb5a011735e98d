// Stands for one subscribed application: each event becomes one text message of the request that the framework made
// for that application. It keeps no history, filters nothing and never answers.
//
// The framework creates it with createCommunicationsServiceEventProxy, owns it, binds it with initProxy before the
// first event and destroys it. Events may come from several threads at once: each builds its text in local storage.
// setCallBackChan must not run on two threads at once.
//
// The order of the declarations is binary interface and differs from the interface's; callers go through the interface.
#pragma once

#include <string>
#include <vector>

#include "CommunicationsServiceEventIfc.h"
#include "platform/framework/Proxy.h"

class CommunicationsServiceEventProxy : public Proxy, public CommunicationsServiceEventIfc
{
public:
    // Keeps the request and sets its protocol.
    void initProxy(ProxyRequest& request) override;

    void callStateChange(std::string const& lineURI, int callID, sfiCallState state, sfiReason reason,
                         sfiSendOptions sendOptions, std::string const& uri, std::string const& name,
                         sfiReplacesDisplay* replacesDisplay, sfiResourcePriority priority,
                         sfiPreemptionCause preemptionCause, std::string const& preemptionText,
                         bool callbackFeatureAvailable, sfiAdditionalCallInfo info) override;
    void registrationStateChange(std::string const& lineURI, int callID, bool registered,
                                 sfiRegistrationResult result) override;
    void incomingCall(std::string const& lineURI, int callID, std::string const& uri, std::string const& name,
                      std::string const& alertURI, std::string const& infoParam, bool autoAnswer, sfiCallType callType,
                      std::string const& diversionURI, std::string const& diversionName,
                      sfiForwardReason diversionReason, bool zipAutoAnswer, sfiResourcePriority priority,
                      sfiAdditionalCallInfo info, bool isVideoCall) override;
    void incomingPickupCall(std::string const& lineURI, int callID, std::string const& uri,
                            std::string const& name) override;
    void callHeld(std::string const& lineURI, int callID) override;
    void callRetrieved(std::string const& lineURI, int callID, std::string const& uri, std::string const& name,
                       sfiAdditionalCallInfo info, bool connectedToMediaServer) override;
    void featureSuccess(std::string const& lineURI, int callID, sfiFeature feature) override;
    void featureFailed(std::string const& lineURI, int callID, sfiFeature feature, sfiFeatureFailure failure) override;
    void remoteEndpointDetailsChanged(std::string const& lineURI, int callID, std::string const& uri,
                                      std::string const& name, bool exitConf, bool jointCall) override;
    void incomingCallMissed(std::string const& lineURI, int callID, std::string const& uri, std::string const& name,
                            sfiReason reason, std::string const& diversionURI, std::string const& diversionName,
                            sfiForwardReason diversionReason) override;
    void callForwarded(std::string const& lineURI, int callID, std::string const& callingParty,
                       std::string const& callingPartyName, std::string const& newDestination,
                       sfiForwardReason reason) override;
    void devicesChanged() override;
    void doNotDisturbSet(std::string const& deviceId, bool on) override;
    void agentStateSet(std::string const& deviceId, std::string const& agentState) override;
    void preemptionStatusChanged(std::string const& lineURI, int callID, sfiResourcePriority priority,
                                 sfiPreemptionCause cause, std::string const& reason) override;
    void impactLevelChanged(std::string const& lineURI, int callID, sfiAdditionalCallInfo info) override;
    void securityStatusChanged(std::string const& lineURI, int callID, sfiSecurityStatus status,
                               std::vector<int>& callIDs, std::vector<std::string>& lineURIs) override;
    void callRecordingStatus(std::string const& lineURI, int callID, std::string const& recorded) override;
    void messageWaiting(std::string const& lineURI, sfiMWIServiceType type, unsigned int newMessages,
                        unsigned int oldMessages, unsigned int newUrgentMessages, unsigned int oldUrgentMessages,
                        sfiMWIMessageReturnType returnType, sfiMWIAvailableInfo availInfo,
                        sfiMessagesWaiting messagesWaiting, std::string const& voiceMailNumber) override;
    void systemStatusChange(std::string const& status, std::string const& statusInfo) override;
    void serverFeatureStatusChange(std::string const& lineURI, std::string const& status) override;
    void b2buaCSTAResponse(std::string const& lineURI, bool success, std::string const& body) override;
    void b2buaCSTAEventOrRequest(std::string const& lineURI, std::string const& body) override;
    void conferenceStatusEvent(std::string const& lineURI, int callID, std::string const& xmlContent) override;
    void incomingAssociatedCall(std::string const& lineURI, int currentCallID, int newCallID) override;
    void callCompletionEvent(std::string const& lineURI, std::string const& uri, sfiCallCompletionType type,
                             sfiCallCompletionState state, bool displayOutcome) override;
    void callCompletionFailedEvent(std::string const& lineURI, std::string const& uri,
                                   sfiCallCompletionFailureType failure) override;
    void bluetoothAudioStatusChanged(std::string const& lineURI, int callID, bool audioEnabled, bool audioGateway,
                                     bool inBandRinging) override;
    void csCommunicationsServiceEvent(std::string const& unused) override;

    // Keeps the name of an executable's channel in place of the former one; null: none.
    void setCallBackChan(Executable* executable);
    std::string const& callBackChan() const { return callBackChan_; }

private:
    template <typename... Pieces>
    void send(Pieces const&... pieces);

    ProxyRequest* request_ = nullptr;  // not owned
    std::string callBackChan_;
};
