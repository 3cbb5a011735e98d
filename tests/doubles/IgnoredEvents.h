// An event interface whose operations do nothing; tests override the ones that they watch.
#pragma once

#include "CommunicationsServiceEventIfc.h"

class IgnoredEvents : public CommunicationsServiceEventIfc
{
public:
    virtual ~IgnoredEvents() = default;

    void callStateChange(std::string const&, int, sfiCallState, sfiReason, sfiSendOptions, std::string const&,
                         std::string const&, sfiReplacesDisplay*, sfiResourcePriority, sfiPreemptionCause,
                         std::string const&, bool, sfiAdditionalCallInfo) override
    {}
    void registrationStateChange(std::string const&, int, bool, sfiRegistrationResult) override {}
    void incomingCall(std::string const&, int, std::string const&, std::string const&, std::string const&,
                      std::string const&, bool, sfiCallType, std::string const&, std::string const&, sfiForwardReason,
                      bool, sfiResourcePriority, sfiAdditionalCallInfo, bool) override
    {}
    void incomingPickupCall(std::string const&, int, std::string const&, std::string const&) override {}
    void callHeld(std::string const&, int) override {}
    void callRetrieved(std::string const&, int, std::string const&, std::string const&, sfiAdditionalCallInfo,
                       bool) override
    {}
    void featureSuccess(std::string const&, int, sfiFeature) override {}
    void featureFailed(std::string const&, int, sfiFeature, sfiFeatureFailure) override {}
    void remoteEndpointDetailsChanged(std::string const&, int, std::string const&, std::string const&, bool,
                                      bool) override
    {}
    void incomingCallMissed(std::string const&, int, std::string const&, std::string const&, sfiReason,
                            std::string const&, std::string const&, sfiForwardReason) override
    {}
    void callForwarded(std::string const&, int, std::string const&, std::string const&, std::string const&,
                       sfiForwardReason) override
    {}
    void incomingAssociatedCall(std::string const&, int, int) override {}
    void devicesChanged() override {}
    void messageWaiting(std::string const&, sfiMWIServiceType, unsigned int, unsigned int, unsigned int, unsigned int,
                        sfiMWIMessageReturnType, sfiMWIAvailableInfo, sfiMessagesWaiting, std::string const&) override
    {}
    void doNotDisturbSet(std::string const&, bool) override {}
    void agentStateSet(std::string const&, std::string const&) override {}
    void securityStatusChanged(std::string const&, int, sfiSecurityStatus, std::vector<int>&,
                               std::vector<std::string>&) override
    {}
    void callRecordingStatus(std::string const&, int, std::string const&) override {}
    void preemptionStatusChanged(std::string const&, int, sfiResourcePriority, sfiPreemptionCause,
                                 std::string const&) override
    {}
    void impactLevelChanged(std::string const&, int, sfiAdditionalCallInfo) override {}
    void systemStatusChange(std::string const&, std::string const&) override {}
    void serverFeatureStatusChange(std::string const&, std::string const&) override {}
    void b2buaCSTAResponse(std::string const&, bool, std::string const&) override {}
    void b2buaCSTAEventOrRequest(std::string const&, std::string const&) override {}
    void conferenceStatusEvent(std::string const&, int, std::string const&) override {}
    void callCompletionEvent(std::string const&, std::string const&, sfiCallCompletionType, sfiCallCompletionState,
                             bool) override
    {}
    void callCompletionFailedEvent(std::string const&, std::string const&, sfiCallCompletionFailureType) override {}
    void bluetoothAudioStatusChanged(std::string const&, int, bool, bool, bool) override {}
    void csCommunicationsServiceEvent(std::string const&) override {}
};
