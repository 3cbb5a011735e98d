// The service's interface for other applications of the telephone: calls, settings and status. The service object
// implements it; take it from the object by a checked cast and never delete through it.
//
// Operations may be called from any thread. They report outcomes as values and do not throw, but for a destination or
// status text that must not be null. The order of the declarations is binary interface and never changes.
#pragma once

#include <string>
#include <vector>

#include "platform/sfi/SfiTypes.h"

class Executable;

class __attribute__((visibility("default"))) CommunicationsServiceIfc
{
public:
    // A notice of the signalling component; ignored.
    virtual void processSignallingComponentEvent(char const* payload, int count) = 0;
    // Starts and ends SIP operation. `allowAutoActivate`: the stack may come back by itself.
    virtual sfiResult activate() = 0;
    virtual sfiResult deactivate(bool allowAutoActivate) = 0;
    virtual sfiResult callClear(std::string const& lineURI, int callID, CSTAEventCause cause) = 0;
    // 0 when the number may not be dialled or no appearance of the line is free.
    virtual sfiResult outgoingCallMake(std::string const& lineURI, int callID, char const* destination,
                                       bool dssDirectCall, bool bridgeCall, bool callCompletionCall) = 0;
    // Lets an offered call ring; `keysetOnly`: on the keyset alone, nothing is sent.
    virtual sfiResult acceptCall(std::string const& lineURI, int callID, bool keysetOnly) = 0;
    virtual sfiResult answerCall(std::string const& lineURI, int callID) = 0;
    virtual sfiResult deflectCall(std::string const& lineURI, int callID, char const* destination) = 0;
    // `manual`: asked for by hand.
    virtual sfiResult holdCall(std::string const& lineURI, int callID, sfiFeature feature, bool manual) = 0;
    virtual sfiResult retrieveCall(std::string const& lineURI, int callID) = 0;
    // Connects the party of the first call with that of the second, for which the record is built.
    virtual sfiResult attendedTransferCall(std::string const& lineURI, int heldCallID, int activeCallID) = 0;
    virtual sfiResult blindTransferCall(std::string const& lineURI, int callID, char const* destination) = 0;
    virtual sfiResult SendCSTARequest(std::string const& lineURI, std::string const& body) = 0;
    virtual sfiResult sendUACSTAServerMessage(std::string& lineURI, std::string& body) = 0;
    virtual sfiResult InitializeOrFinalizeServerFeatures(std::string const& lineURI, bool initialize) = 0;
    // Call-back when the party did not answer, or was busy.
    virtual sfiResult activateCallbackRinging(std::string const& lineURI, int callID) = 0;
    virtual sfiResult activateCallbackBusy(std::string const& lineURI, int callID) = 0;
    virtual sfiResult cancelCallbacks(std::string const& lineURI, int callID, std::string const& target,
                                      sfiCancelCallBackType type, bool displayOutcome) = 0;
    virtual sfiResult consultationCall(std::string const& lineURI, int callID, char const* destination) = 0;
    virtual sfiResult refuseCall(std::string const& lineURI, int callID, sfiRefuseCall reason) = 0;
    // `subscriber` receives the events of CommunicationsServiceEventIfc.
    virtual sfiResult subscribe(Executable* subscriber) = 0;
    virtual sfiResult directedPickupCall(std::string const& lineURI, int callID, std::string const& callToBePickedUp,
                                         bool BLFPickup) = 0;
    virtual sfiResult groupPickupCall(std::string const& lineURI, int callID) = 0;
    virtual sfiResult setServiceState(sfiServiceState state) = 0;
    virtual sfiResult getServiceState(sfiServiceState& state) = 0;
    // 0 when do-not-disturb is to be switched on and the feature is disabled.
    virtual sfiResult setDoNotDisturb(std::string const& lineURI, bool on) = 0;
    // The state of the whole phone, whatever the line.
    virtual sfiResult getDoNotDisturb(std::string const& lineURI, bool& on) = 0;
    // One of "loggedOn", "loggedOff", "notReady", "ready", "workingAfterCall"; 0 when refused.
    virtual sfiResult setAgentState(std::string const& lineURI, std::string const& state) = 0;
    virtual sfiResult setMicrophoneMute(bool mute) = 0;
    virtual sfiResult getMicrophoneMute(bool& mute) = 0;
    // The user interface tells which view is showing; 0 for an unknown one.
    virtual sfiResult systemStatus(char const* status, char const* statusInfo) = 0;
    virtual sfiResult generateDigits(std::string const& lineURI, int callID, char const* digits) = 0;
    // Appends the device identities that can be monitored; 0 when there are none.
    virtual sfiResult getDevices(std::vector<std::string>& devices) = 0;
    // Joins the first call to the second, for which the record is built.
    virtual sfiResult conferenceCall(std::string const& lineURI, int heldCallID, int activeCallID,
                                     sfiFeature feature) = 0;
    // Whether the call was put on hold by hand.
    virtual bool getManualHoldIndication(std::string const& lineURI, int callID) = 0;
    virtual sfiResult alternateCalls(std::string const& lineURI) = 0;
    // Always 5; the outputs are zero when nothing is known.
    virtual sfiResult getMessageWaitingIndicator(int& type, unsigned int& newMessages, unsigned int& oldMessages,
                                                 unsigned int& newUrgentMessages, unsigned int& oldUrgentMessages,
                                                 int& returnType, int& availableInfo, int& messagesWaiting,
                                                 std::string& voiceMailURI) = 0;
    virtual sfiResult setAssociatedCalls(bool associated) = 0;
    // Lamps "Hold" and "SecondAlert"; always 5.
    virtual sfiResult setLampMode(std::string const& lineURI, std::string const& lampId, int lampMode) = 0;
    virtual sfiResult makeSecurityChangeReinvite(std::string const& lineURI, int callID, bool secure) = 0;
    virtual void setIsInServiceInitiatedState(std::string const& lineURI, bool initiated) = 0;
    // 0 when there is no configuration store, else 5. `cfnrRingCount` counts rings and matters for no-reply only.
    virtual sfiResult setForwardingConfiguration(std::string const& lineURI, sfiForwardingType type, bool on,
                                                 std::string const& destination, int cfnrRingCount,
                                                 bool forceQORAUpdate) = 0;
    // 5, or 0 for a type that has no rule; the outputs are then left as they are.
    virtual sfiResult getForwardingConfiguration(sfiForwardingType type, bool& on, std::string& destination,
                                                 int& cfnrRingCount) = 0;
    virtual void callbackDOFeatureCallID(std::string const& callId, int instanceId) = 0;
    // Always the empty text.
    virtual std::string csCommunicationsService(char const* unused) = 0;
    // Does nothing.
    virtual void activateStoredFwd() = 0;

protected:
    ~CommunicationsServiceIfc() = default;
};
