// A service whose operations report their name and arguments to an observer and return the given result. Used instead
// of the mock where a test needs every call recorded, or no allocation at all (NoObserver).
//
// An observer has two member templates: called(name, arguments...), and fill(outputs...) for operations with outputs.
#pragma once

#include <string>
#include <type_traits>
#include <vector>

#include "CommunicationsServiceIfc.h"
#include "platform/framework/Executable.h"

template <typename Observer>
class ObservedService : public Executable, public CommunicationsServiceIfc
{
public:
    Observer observer;
    int result = sfiSuccess;

    void init(Context& /*context*/) override {}
    void shutdown() override {}

    void processSignallingComponentEvent(char const* payload, int count) override
    {
        observer.called("processSignallingComponentEvent", payload, count);
    }
    sfiResult activate() override { return answer("activate"); }
    sfiResult deactivate(bool allowAutoActivate) override { return answer("deactivate", allowAutoActivate); }
    sfiResult callClear(std::string const& lineURI, int callID, CSTAEventCause cause) override
    {
        return answer("callClear", lineURI, callID, cause);
    }
    sfiResult outgoingCallMake(std::string const& lineURI, int callID, char const* destination, bool dssDirectCall,
                               bool bridgeCall, bool callCompletionCall) override
    {
        return answer("outgoingCallMake", lineURI, callID, destination, dssDirectCall, bridgeCall, callCompletionCall);
    }
    sfiResult acceptCall(std::string const& lineURI, int callID, bool keysetOnly) override
    {
        return answer("acceptCall", lineURI, callID, keysetOnly);
    }
    sfiResult answerCall(std::string const& lineURI, int callID) override
    {
        return answer("answerCall", lineURI, callID);
    }
    sfiResult deflectCall(std::string const& lineURI, int callID, char const* destination) override
    {
        return answer("deflectCall", lineURI, callID, destination);
    }
    sfiResult holdCall(std::string const& lineURI, int callID, sfiFeature feature, bool manual) override
    {
        return answer("holdCall", lineURI, callID, feature, manual);
    }
    sfiResult retrieveCall(std::string const& lineURI, int callID) override
    {
        return answer("retrieveCall", lineURI, callID);
    }
    sfiResult attendedTransferCall(std::string const& lineURI, int heldCallID, int activeCallID) override
    {
        return answer("attendedTransferCall", lineURI, heldCallID, activeCallID);
    }
    sfiResult blindTransferCall(std::string const& lineURI, int callID, char const* destination) override
    {
        return answer("blindTransferCall", lineURI, callID, destination);
    }
    sfiResult SendCSTARequest(std::string const& lineURI, std::string const& body) override
    {
        return answer("SendCSTARequest", lineURI, body);
    }
    sfiResult sendUACSTAServerMessage(std::string& lineURI, std::string& body) override
    {
        return answer("sendUACSTAServerMessage", lineURI, body);
    }
    sfiResult InitializeOrFinalizeServerFeatures(std::string const& lineURI, bool initialize) override
    {
        return answer("InitializeOrFinalizeServerFeatures", lineURI, initialize);
    }
    sfiResult activateCallbackRinging(std::string const& lineURI, int callID) override
    {
        return answer("activateCallbackRinging", lineURI, callID);
    }
    sfiResult activateCallbackBusy(std::string const& lineURI, int callID) override
    {
        return answer("activateCallbackBusy", lineURI, callID);
    }
    sfiResult cancelCallbacks(std::string const& lineURI, int callID, std::string const& target,
                              sfiCancelCallBackType type, bool displayOutcome) override
    {
        return answer("cancelCallbacks", lineURI, callID, target, type, displayOutcome);
    }
    sfiResult consultationCall(std::string const& lineURI, int callID, char const* destination) override
    {
        return answer("consultationCall", lineURI, callID, destination);
    }
    sfiResult refuseCall(std::string const& lineURI, int callID, sfiRefuseCall reason) override
    {
        return answer("refuseCall", lineURI, callID, reason);
    }
    sfiResult subscribe(Executable* subscriber) override { return answer("subscribe", subscriber); }
    sfiResult directedPickupCall(std::string const& lineURI, int callID, std::string const& callToBePickedUp,
                                 bool BLFPickup) override
    {
        return answer("directedPickupCall", lineURI, callID, callToBePickedUp, BLFPickup);
    }
    sfiResult groupPickupCall(std::string const& lineURI, int callID) override
    {
        return answer("groupPickupCall", lineURI, callID);
    }
    sfiResult setServiceState(sfiServiceState state) override { return answer("setServiceState", state); }
    sfiResult getServiceState(sfiServiceState& state) override
    {
        observer.called("getServiceState");
        observer.fill(state);
        return static_cast<sfiResult>(result);
    }
    sfiResult setDoNotDisturb(std::string const& lineURI, bool on) override
    {
        return answer("setDoNotDisturb", lineURI, on);
    }
    sfiResult getDoNotDisturb(std::string const& lineURI, bool& on) override
    {
        observer.called("getDoNotDisturb", lineURI);
        observer.fill(on);
        return static_cast<sfiResult>(result);
    }
    sfiResult setAgentState(std::string const& lineURI, std::string const& state) override
    {
        return answer("setAgentState", lineURI, state);
    }
    sfiResult setMicrophoneMute(bool mute) override { return answer("setMicrophoneMute", mute); }
    sfiResult getMicrophoneMute(bool& mute) override
    {
        observer.called("getMicrophoneMute");
        observer.fill(mute);
        return static_cast<sfiResult>(result);
    }
    sfiResult systemStatus(char const* status, char const* statusInfo) override
    {
        return answer("systemStatus", status, statusInfo);
    }
    sfiResult generateDigits(std::string const& lineURI, int callID, char const* digits) override
    {
        return answer("generateDigits", lineURI, callID, digits);
    }
    sfiResult getDevices(std::vector<std::string>& devices) override
    {
        observer.called("getDevices");
        observer.fill(devices);
        return static_cast<sfiResult>(result);
    }
    sfiResult conferenceCall(std::string const& lineURI, int heldCallID, int activeCallID, sfiFeature feature) override
    {
        return answer("conferenceCall", lineURI, heldCallID, activeCallID, feature);
    }
    bool getManualHoldIndication(std::string const& lineURI, int callID) override
    {
        return answer("getManualHoldIndication", lineURI, callID) != sfiFailure;
    }
    sfiResult alternateCalls(std::string const& lineURI) override { return answer("alternateCalls", lineURI); }
    sfiResult getMessageWaitingIndicator(int& type, unsigned int& newMessages, unsigned int& oldMessages,
                                         unsigned int& newUrgentMessages, unsigned int& oldUrgentMessages,
                                         int& returnType, int& availableInfo, int& messagesWaiting,
                                         std::string& voiceMailURI) override
    {
        observer.called("getMessageWaitingIndicator");
        observer.fill(type, newMessages, oldMessages, newUrgentMessages, oldUrgentMessages, returnType, availableInfo,
                      messagesWaiting, voiceMailURI);
        return static_cast<sfiResult>(result);
    }
    sfiResult setAssociatedCalls(bool associated) override { return answer("setAssociatedCalls", associated); }
    sfiResult setLampMode(std::string const& lineURI, std::string const& lampId, int lampMode) override
    {
        return answer("setLampMode", lineURI, lampId, lampMode);
    }
    sfiResult makeSecurityChangeReinvite(std::string const& lineURI, int callID, bool secure) override
    {
        return answer("makeSecurityChangeReinvite", lineURI, callID, secure);
    }
    void setIsInServiceInitiatedState(std::string const& lineURI, bool initiated) override
    {
        observer.called("setIsInServiceInitiatedState", lineURI, initiated);
    }
    sfiResult setForwardingConfiguration(std::string const& lineURI, sfiForwardingType type, bool on,
                                         std::string const& destination, int cfnrRingCount,
                                         bool forceQORAUpdate) override
    {
        return answer("setForwardingConfiguration", lineURI, type, on, destination, cfnrRingCount, forceQORAUpdate);
    }
    sfiResult getForwardingConfiguration(sfiForwardingType type, bool& on, std::string& destination,
                                         int& cfnrRingCount) override
    {
        observer.called("getForwardingConfiguration", type);
        observer.fill(on, destination, cfnrRingCount);
        return static_cast<sfiResult>(result);
    }
    void callbackDOFeatureCallID(std::string const& callId, int instanceId) override
    {
        observer.called("callbackDOFeatureCallID", callId, instanceId);
    }
    std::string csCommunicationsService(char const* unused) override
    {
        observer.called("csCommunicationsService", unused);
        return {};
    }
    void activateStoredFwd() override { observer.called("activateStoredFwd"); }

private:
    template <typename... Arguments>
    sfiResult answer(char const* name, Arguments const&... arguments)
    {
        observer.called(name, arguments...);
        return static_cast<sfiResult>(result);
    }
};

struct NoObserver
{
    template <typename... Arguments>
    void called(char const* /*name*/, Arguments const&... /*arguments*/)
    {}
    template <typename... Outputs>
    void fill(Outputs&... /*outputs*/)
    {}
};

static_assert(!std::is_abstract_v<ObservedService<NoObserver>>);
