// A service that does nothing and allocates nothing; each operation answers the given result.
#pragma once

#include <string>
#include <vector>

#include "CommunicationsServiceIfc.h"
#include "platform/framework/Executable.h"

class QuietService : public Executable, public CommunicationsServiceIfc
{
public:
    int result = sfiSuccess;

    void init(Context& /*context*/) override {}
    void shutdown() override {}

    void processSignallingComponentEvent(char const* /*payload*/, int /*count*/) override {}
    sfiResult activate() override { return static_cast<sfiResult>(result); }
    sfiResult deactivate(bool /*allowAutoActivate*/) override { return static_cast<sfiResult>(result); }
    sfiResult callClear(std::string const& /*lineURI*/, int /*callID*/, CSTAEventCause /*cause*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult outgoingCallMake(std::string const& /*lineURI*/, int /*callID*/, char const* /*destination*/,
                               bool /*dssDirectCall*/, bool /*bridgeCall*/, bool /*callCompletionCall*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult acceptCall(std::string const& /*lineURI*/, int /*callID*/, bool /*keysetOnly*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult answerCall(std::string const& /*lineURI*/, int /*callID*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult deflectCall(std::string const& /*lineURI*/, int /*callID*/, char const* /*destination*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult holdCall(std::string const& /*lineURI*/, int /*callID*/, sfiFeature /*feature*/, bool /*manual*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult retrieveCall(std::string const& /*lineURI*/, int /*callID*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult attendedTransferCall(std::string const& /*lineURI*/, int /*heldCallID*/, int /*activeCallID*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult blindTransferCall(std::string const& /*lineURI*/, int /*callID*/, char const* /*destination*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult SendCSTARequest(std::string const& /*lineURI*/, std::string const& /*body*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult sendUACSTAServerMessage(std::string& /*lineURI*/, std::string& /*body*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult InitializeOrFinalizeServerFeatures(std::string const& /*lineURI*/, bool /*initialize*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult activateCallbackRinging(std::string const& /*lineURI*/, int /*callID*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult activateCallbackBusy(std::string const& /*lineURI*/, int /*callID*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult cancelCallbacks(std::string const& /*lineURI*/, int /*callID*/, std::string const& /*target*/,
                              sfiCancelCallBackType /*type*/, bool /*displayOutcome*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult consultationCall(std::string const& /*lineURI*/, int /*callID*/, char const* /*destination*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult refuseCall(std::string const& /*lineURI*/, int /*callID*/, sfiRefuseCall /*reason*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult subscribe(Executable* /*subscriber*/) override { return static_cast<sfiResult>(result); }
    sfiResult directedPickupCall(std::string const& /*lineURI*/, int /*callID*/,
                                 std::string const& /*callToBePickedUp*/, bool /*BLFPickup*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult groupPickupCall(std::string const& /*lineURI*/, int /*callID*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult setServiceState(sfiServiceState /*state*/) override { return static_cast<sfiResult>(result); }
    sfiResult getServiceState(sfiServiceState& /*state*/) override { return static_cast<sfiResult>(result); }
    sfiResult setDoNotDisturb(std::string const& /*lineURI*/, bool /*on*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult getDoNotDisturb(std::string const& /*lineURI*/, bool& /*on*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult setAgentState(std::string const& /*lineURI*/, std::string const& /*state*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult setMicrophoneMute(bool /*mute*/) override { return static_cast<sfiResult>(result); }
    sfiResult getMicrophoneMute(bool& /*mute*/) override { return static_cast<sfiResult>(result); }
    sfiResult systemStatus(char const* /*status*/, char const* /*statusInfo*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult generateDigits(std::string const& /*lineURI*/, int /*callID*/, char const* /*digits*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult getDevices(std::vector<std::string>& /*devices*/) override { return static_cast<sfiResult>(result); }
    sfiResult conferenceCall(std::string const& /*lineURI*/, int /*heldCallID*/, int /*activeCallID*/,
                             sfiFeature /*feature*/) override
    {
        return static_cast<sfiResult>(result);
    }
    bool getManualHoldIndication(std::string const& /*lineURI*/, int /*callID*/) override { return result != 0; }
    sfiResult alternateCalls(std::string const& /*lineURI*/) override { return static_cast<sfiResult>(result); }
    sfiResult getMessageWaitingIndicator(int& /*type*/, unsigned int& /*newMessages*/, unsigned int& /*oldMessages*/,
                                         unsigned int& /*newUrgentMessages*/, unsigned int& /*oldUrgentMessages*/,
                                         int& /*returnType*/, int& /*availableInfo*/, int& /*messagesWaiting*/,
                                         std::string& /*voiceMailURI*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult setAssociatedCalls(bool /*associated*/) override { return static_cast<sfiResult>(result); }
    sfiResult setLampMode(std::string const& /*lineURI*/, std::string const& /*lampId*/, int /*lampMode*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult makeSecurityChangeReinvite(std::string const& /*lineURI*/, int /*callID*/, bool /*secure*/) override
    {
        return static_cast<sfiResult>(result);
    }
    void setIsInServiceInitiatedState(std::string const& /*lineURI*/, bool /*initiated*/) override {}
    sfiResult setForwardingConfiguration(std::string const& /*lineURI*/, sfiForwardingType /*type*/, bool /*on*/,
                                         std::string const& /*destination*/, int /*cfnrRingCount*/,
                                         bool /*forceQORAUpdate*/) override
    {
        return static_cast<sfiResult>(result);
    }
    sfiResult getForwardingConfiguration(sfiForwardingType /*type*/, bool& /*on*/, std::string& /*destination*/,
                                         int& /*cfnrRingCount*/) override
    {
        return static_cast<sfiResult>(result);
    }
    void callbackDOFeatureCallID(std::string const& /*callId*/, int /*instanceId*/) override {}
    std::string csCommunicationsService(char const* /*unused*/) override { return {}; }
    void activateStoredFwd() override {}
};
