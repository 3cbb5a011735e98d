// The service behind the invoker: an executable that can be cast to the service's interface.
#pragma once

#include <string>
#include <type_traits>
#include <vector>

#include <gmock/gmock.h>

#include "CommunicationsServiceIfc.h"
#include "platform/framework/Executable.h"

class MockCommunicationsService : public Executable, public CommunicationsServiceIfc
{
public:
    MOCK_METHOD(void, init, (Context & context), (override));
    MOCK_METHOD(void, shutdown, (), (override));

    MOCK_METHOD(void, processSignallingComponentEvent, (char const* payload, int count), (override));
    MOCK_METHOD(sfiResult, activate, (), (override));
    MOCK_METHOD(sfiResult, deactivate, (bool allowAutoActivate), (override));
    MOCK_METHOD(sfiResult, callClear, (std::string const& lineURI, int callID, CSTAEventCause cause), (override));
    MOCK_METHOD(sfiResult, outgoingCallMake,
                (std::string const& lineURI, int callID, char const* destination, bool dssDirectCall, bool bridgeCall,
                 bool callCompletionCall),
                (override));
    MOCK_METHOD(sfiResult, acceptCall, (std::string const& lineURI, int callID, bool keysetOnly), (override));
    MOCK_METHOD(sfiResult, answerCall, (std::string const& lineURI, int callID), (override));
    MOCK_METHOD(sfiResult, deflectCall, (std::string const& lineURI, int callID, char const* destination), (override));
    MOCK_METHOD(sfiResult, holdCall, (std::string const& lineURI, int callID, sfiFeature feature, bool manual),
                (override));
    MOCK_METHOD(sfiResult, retrieveCall, (std::string const& lineURI, int callID), (override));
    MOCK_METHOD(sfiResult, attendedTransferCall, (std::string const& lineURI, int heldCallID, int activeCallID),
                (override));
    MOCK_METHOD(sfiResult, blindTransferCall, (std::string const& lineURI, int callID, char const* destination),
                (override));
    MOCK_METHOD(sfiResult, SendCSTARequest, (std::string const& lineURI, std::string const& body), (override));
    MOCK_METHOD(sfiResult, sendUACSTAServerMessage, (std::string & lineURI, std::string& body), (override));
    MOCK_METHOD(sfiResult, InitializeOrFinalizeServerFeatures, (std::string const& lineURI, bool initialize),
                (override));
    MOCK_METHOD(sfiResult, activateCallbackRinging, (std::string const& lineURI, int callID), (override));
    MOCK_METHOD(sfiResult, activateCallbackBusy, (std::string const& lineURI, int callID), (override));
    MOCK_METHOD(sfiResult, cancelCallbacks,
                (std::string const& lineURI, int callID, std::string const& target, sfiCancelCallBackType type,
                 bool displayOutcome),
                (override));
    MOCK_METHOD(sfiResult, consultationCall, (std::string const& lineURI, int callID, char const* destination),
                (override));
    MOCK_METHOD(sfiResult, refuseCall, (std::string const& lineURI, int callID, sfiRefuseCall reason), (override));
    MOCK_METHOD(sfiResult, subscribe, (Executable * subscriber), (override));
    MOCK_METHOD(sfiResult, directedPickupCall,
                (std::string const& lineURI, int callID, std::string const& callToBePickedUp, bool BLFPickup),
                (override));
    MOCK_METHOD(sfiResult, groupPickupCall, (std::string const& lineURI, int callID), (override));
    MOCK_METHOD(sfiResult, setServiceState, (sfiServiceState state), (override));
    MOCK_METHOD(sfiResult, getServiceState, (sfiServiceState & state), (override));
    MOCK_METHOD(sfiResult, setDoNotDisturb, (std::string const& lineURI, bool on), (override));
    MOCK_METHOD(sfiResult, getDoNotDisturb, (std::string const& lineURI, bool& on), (override));
    MOCK_METHOD(sfiResult, setAgentState, (std::string const& lineURI, std::string const& state), (override));
    MOCK_METHOD(sfiResult, setMicrophoneMute, (bool mute), (override));
    MOCK_METHOD(sfiResult, getMicrophoneMute, (bool& mute), (override));
    MOCK_METHOD(sfiResult, systemStatus, (char const* status, char const* statusInfo), (override));
    MOCK_METHOD(sfiResult, generateDigits, (std::string const& lineURI, int callID, char const* digits), (override));
    MOCK_METHOD(sfiResult, getDevices, (std::vector<std::string> & devices), (override));
    MOCK_METHOD(sfiResult, conferenceCall,
                (std::string const& lineURI, int heldCallID, int activeCallID, sfiFeature feature), (override));
    MOCK_METHOD(bool, getManualHoldIndication, (std::string const& lineURI, int callID), (override));
    MOCK_METHOD(sfiResult, alternateCalls, (std::string const& lineURI), (override));
    MOCK_METHOD(sfiResult, getMessageWaitingIndicator,
                (int& type, unsigned int& newMessages, unsigned int& oldMessages, unsigned int& newUrgentMessages,
                 unsigned int& oldUrgentMessages, int& returnType, int& availableInfo, int& messagesWaiting,
                 std::string& voiceMailURI),
                (override));
    MOCK_METHOD(sfiResult, setAssociatedCalls, (bool associated), (override));
    MOCK_METHOD(sfiResult, setLampMode, (std::string const& lineURI, std::string const& lampId, int lampMode),
                (override));
    MOCK_METHOD(sfiResult, makeSecurityChangeReinvite, (std::string const& lineURI, int callID, bool secure),
                (override));
    MOCK_METHOD(void, setIsInServiceInitiatedState, (std::string const& lineURI, bool initiated), (override));
    MOCK_METHOD(sfiResult, setForwardingConfiguration,
                (std::string const& lineURI, sfiForwardingType type, bool on, std::string const& destination,
                 int cfnrRingCount, bool forceQORAUpdate),
                (override));
    MOCK_METHOD(sfiResult, getForwardingConfiguration,
                (sfiForwardingType type, bool& on, std::string& destination, int& cfnrRingCount), (override));
    MOCK_METHOD(void, callbackDOFeatureCallID, (std::string const& callId, int instanceId), (override));
    MOCK_METHOD(std::string, csCommunicationsService, (char const* unused), (override));
    MOCK_METHOD(void, activateStoredFwd, (), (override));
};
static_assert(!std::is_abstract_v<MockCommunicationsService>);
