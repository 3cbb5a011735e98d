// A service that writes down each call as a list of its name and arguments, and answers what the test gave it. The
// golden texts are compared with it.
#pragma once

#include <string>
#include <type_traits>
#include <vector>

#include <nlohmann/json.hpp>

#include "CommunicationsServiceIfc.h"
#include "platform/framework/Executable.h"

class RecordedService : public Executable, public CommunicationsServiceIfc
{
public:
    nlohmann::json calls = nlohmann::json::array();
    int result = sfiSuccess;
    nlohmann::json outputs;

    void init(Context& /*context*/) override {}
    void shutdown() override {}

    void processSignallingComponentEvent(char const* payload, int count) override
    {
        record("processSignallingComponentEvent", payload, count);
    }
    sfiResult activate() override
    {
        record("activate");
        return answer();
    }
    sfiResult deactivate(bool allowAutoActivate) override
    {
        record("deactivate", allowAutoActivate);
        return answer();
    }
    sfiResult callClear(std::string const& lineURI, int callID, CSTAEventCause cause) override
    {
        record("callClear", lineURI, callID, cause);
        return answer();
    }
    sfiResult outgoingCallMake(std::string const& lineURI, int callID, char const* destination, bool dssDirectCall,
                               bool bridgeCall, bool callCompletionCall) override
    {
        record("outgoingCallMake", lineURI, callID, destination, dssDirectCall, bridgeCall, callCompletionCall);
        return answer();
    }
    sfiResult acceptCall(std::string const& lineURI, int callID, bool keysetOnly) override
    {
        record("acceptCall", lineURI, callID, keysetOnly);
        return answer();
    }
    sfiResult answerCall(std::string const& lineURI, int callID) override
    {
        record("answerCall", lineURI, callID);
        return answer();
    }
    sfiResult deflectCall(std::string const& lineURI, int callID, char const* destination) override
    {
        record("deflectCall", lineURI, callID, destination);
        return answer();
    }
    sfiResult holdCall(std::string const& lineURI, int callID, sfiFeature feature, bool manual) override
    {
        record("holdCall", lineURI, callID, feature, manual);
        return answer();
    }
    sfiResult retrieveCall(std::string const& lineURI, int callID) override
    {
        record("retrieveCall", lineURI, callID);
        return answer();
    }
    sfiResult attendedTransferCall(std::string const& lineURI, int heldCallID, int activeCallID) override
    {
        record("attendedTransferCall", lineURI, heldCallID, activeCallID);
        return answer();
    }
    sfiResult blindTransferCall(std::string const& lineURI, int callID, char const* destination) override
    {
        record("blindTransferCall", lineURI, callID, destination);
        return answer();
    }
    sfiResult SendCSTARequest(std::string const& lineURI, std::string const& body) override
    {
        record("SendCSTARequest", lineURI, body);
        return answer();
    }
    sfiResult sendUACSTAServerMessage(std::string& lineURI, std::string& body) override
    {
        record("sendUACSTAServerMessage", lineURI, body);
        return answer();
    }
    sfiResult InitializeOrFinalizeServerFeatures(std::string const& lineURI, bool initialize) override
    {
        record("InitializeOrFinalizeServerFeatures", lineURI, initialize);
        return answer();
    }
    sfiResult activateCallbackRinging(std::string const& lineURI, int callID) override
    {
        record("activateCallbackRinging", lineURI, callID);
        return answer();
    }
    sfiResult activateCallbackBusy(std::string const& lineURI, int callID) override
    {
        record("activateCallbackBusy", lineURI, callID);
        return answer();
    }
    sfiResult cancelCallbacks(std::string const& lineURI, int callID, std::string const& target,
                              sfiCancelCallBackType type, bool displayOutcome) override
    {
        record("cancelCallbacks", lineURI, callID, target, type, displayOutcome);
        return answer();
    }
    sfiResult consultationCall(std::string const& lineURI, int callID, char const* destination) override
    {
        record("consultationCall", lineURI, callID, destination);
        return answer();
    }
    sfiResult refuseCall(std::string const& lineURI, int callID, sfiRefuseCall reason) override
    {
        record("refuseCall", lineURI, callID, reason);
        return answer();
    }
    sfiResult subscribe(Executable* subscriber) override
    {
        record("subscribe", subscriber == eventProxy ? "event proxy of the requester" : "something else");
        return answer();
    }
    sfiResult directedPickupCall(std::string const& lineURI, int callID, std::string const& callToBePickedUp,
                                 bool BLFPickup) override
    {
        record("directedPickupCall", lineURI, callID, callToBePickedUp, BLFPickup);
        return answer();
    }
    sfiResult groupPickupCall(std::string const& lineURI, int callID) override
    {
        record("groupPickupCall", lineURI, callID);
        return answer();
    }
    sfiResult setServiceState(sfiServiceState state) override
    {
        record("setServiceState", state);
        return answer();
    }
    sfiResult getServiceState(sfiServiceState& state) override
    {
        record("getServiceState");
        state = static_cast<sfiServiceState>(outputs.at(0).get<int>());
        return answer();
    }
    sfiResult setDoNotDisturb(std::string const& lineURI, bool on) override
    {
        record("setDoNotDisturb", lineURI, on);
        return answer();
    }
    sfiResult getDoNotDisturb(std::string const& lineURI, bool& on) override
    {
        record("getDoNotDisturb", lineURI);
        outputs.at(0).get_to(on);
        return answer();
    }
    sfiResult setAgentState(std::string const& lineURI, std::string const& state) override
    {
        record("setAgentState", lineURI, state);
        return answer();
    }
    sfiResult setMicrophoneMute(bool mute) override
    {
        record("setMicrophoneMute", mute);
        return answer();
    }
    sfiResult getMicrophoneMute(bool& mute) override
    {
        record("getMicrophoneMute");
        outputs.at(0).get_to(mute);
        return answer();
    }
    sfiResult systemStatus(char const* status, char const* statusInfo) override
    {
        record("systemStatus", status, statusInfo);
        return answer();
    }
    sfiResult generateDigits(std::string const& lineURI, int callID, char const* digits) override
    {
        record("generateDigits", lineURI, callID, digits);
        return answer();
    }
    sfiResult getDevices(std::vector<std::string>& devices) override
    {
        record("getDevices");
        for (auto const& device : outputs) {
            devices.push_back(device.get<std::string>());
        }
        return answer();
    }
    sfiResult conferenceCall(std::string const& lineURI, int heldCallID, int activeCallID, sfiFeature feature) override
    {
        record("conferenceCall", lineURI, heldCallID, activeCallID, feature);
        return answer();
    }
    bool getManualHoldIndication(std::string const& lineURI, int callID) override
    {
        record("getManualHoldIndication", lineURI, callID);
        return result != 0;
    }
    sfiResult alternateCalls(std::string const& lineURI) override
    {
        record("alternateCalls", lineURI);
        return answer();
    }
    sfiResult getMessageWaitingIndicator(int& type, unsigned int& newMessages, unsigned int& oldMessages,
                                         unsigned int& newUrgentMessages, unsigned int& oldUrgentMessages,
                                         int& returnType, int& availableInfo, int& messagesWaiting,
                                         std::string& voiceMailURI) override
    {
        record("getMessageWaitingIndicator");
        outputs.at(0).get_to(type);
        outputs.at(1).get_to(newMessages);
        outputs.at(2).get_to(oldMessages);
        outputs.at(3).get_to(newUrgentMessages);
        outputs.at(4).get_to(oldUrgentMessages);
        outputs.at(5).get_to(returnType);
        outputs.at(6).get_to(availableInfo);
        outputs.at(7).get_to(messagesWaiting);
        outputs.at(8).get_to(voiceMailURI);
        return answer();
    }
    sfiResult setAssociatedCalls(bool associated) override
    {
        record("setAssociatedCalls", associated);
        return answer();
    }
    sfiResult setLampMode(std::string const& lineURI, std::string const& lampId, int lampMode) override
    {
        record("setLampMode", lineURI, lampId, lampMode);
        return answer();
    }
    sfiResult makeSecurityChangeReinvite(std::string const& lineURI, int callID, bool secure) override
    {
        record("makeSecurityChangeReinvite", lineURI, callID, secure);
        return answer();
    }
    void setIsInServiceInitiatedState(std::string const& lineURI, bool initiated) override
    {
        record("setIsInServiceInitiatedState", lineURI, initiated);
    }
    sfiResult setForwardingConfiguration(std::string const& lineURI, sfiForwardingType type, bool on,
                                         std::string const& destination, int cfnrRingCount,
                                         bool forceQORAUpdate) override
    {
        record("setForwardingConfiguration", lineURI, type, on, destination, cfnrRingCount, forceQORAUpdate);
        return answer();
    }
    sfiResult getForwardingConfiguration(sfiForwardingType type, bool& on, std::string& destination,
                                         int& cfnrRingCount) override
    {
        record("getForwardingConfiguration", type);
        outputs.at(0).get_to(on);
        outputs.at(1).get_to(destination);
        outputs.at(2).get_to(cfnrRingCount);
        return answer();
    }
    void callbackDOFeatureCallID(std::string const& callId, int instanceId) override
    {
        record("callbackDOFeatureCallID", callId, instanceId);
    }
    std::string csCommunicationsService(char const* unused) override
    {
        record("csCommunicationsService", unused);
        return {};
    }
    void activateStoredFwd() override { record("activateStoredFwd"); }

    Executable* eventProxy = nullptr;

private:
    template <typename... Arguments>
    void record(char const* name, Arguments const&... arguments)
    {
        calls.push_back(nlohmann::json::array({name, plain(arguments)...}));
    }

    template <typename Argument>
    static nlohmann::json plain(Argument const& argument)
    {
        if constexpr (std::is_enum_v<Argument>) {
            return static_cast<int>(argument);
        } else {
            return argument;
        }
    }

    sfiResult answer() const { return static_cast<sfiResult>(result); }
};
