/// @file
/// The service's interface for other applications of the telephone: calls, settings and status.
#pragma once

#include <string>
#include <vector>

#include "platform/sfi/SfiTypes.h"

class Executable;

/// Calls, settings and status. The service object implements it: take it from the object by a checked cast and never
/// delete through it. Call its operations only after `init`, and only in a telephone that has call control.
///
/// Thread: any, several at once. An operation may wait for the call control's lock; none waits for the network. Hold no
/// lock of your own that an event receiver needs. setDoNotDisturb, setAgentState and setForwardingConfiguration also
/// take the service's publication lock, which is not recursive: do not call these three while holding CSfi's Lock, nor
/// from a notice of the configuration store (MgmtAgentIfc) that they cause.
///
/// Results: sfiSuccess means done, or under way; the outcome on the network follows as an event of
/// CommunicationsServiceEventIfc. Unless stated otherwise the result is that of the CSfi operation of the same meaning,
/// unchanged; CSfi lists its failures. "Always" means: whatever the platform answered. Operations do not throw, except
/// for a text pointer that must not be null.
///
/// Arguments that recur: `lineURI` is the identifier of a line, or of an appearance ("4711#2"). On a single-line
/// telephone, or when it names no line, the call is line 0 of the telephone. `callID` is the application's number of
/// the call, 1 or more. On a multi-call-appearance line a call without appearance takes one: the one that the
/// identifier names, else one that is selected, else one held for consultation, else the first that is free; only
/// callClear takes none.
///
/// The order of the declarations is binary interface and never changes.
class __attribute__((visibility("default"))) CommunicationsServiceIfc
{
public:
    /// A notice of the signalling component. Ignored.
    /// @param payload the text behind "SigEvent:"
    /// @param count one more than its bytes
    virtual void processSignallingComponentEvent(char const* payload, int count) = 0;
    /// Starts SIP operation: the lines register.
    /// @return The answer of CSfi::Activate: sfiFailure once the service was shut down.
    virtual sfiResult activate() = 0;
    /// Ends SIP operation: calls are cleared, registrations end.
    /// @param allowAutoActivate whether the call control may start again by itself
    /// @return The answer of CSfi::Deactivate, normally sfiSuccess.
    virtual sfiResult deactivate(bool allowAutoActivate) = 0;
    /// Ends a call in any state: hangs up, cancels or refuses it, with the status and reason of `cause`.
    /// @return The answer of CSfi::CallClear: sfiFailure for an unknown call.
    virtual sfiResult callClear(std::string const& lineURI, int callID, CSTAEventCause cause) = 0;
    /// Makes a call. For a permitted number on a locked phone, do-not-disturb of the whole telephone is switched off
    /// first, without telling the configuration store.
    /// @param lineURI the line
    /// @param callID a number that is not in use
    /// @param destination a number or an address; null is refused
    /// @param dssDirectCall the call comes from a direct-station-select key
    /// @param bridgeCall the call joins a bridged line
    /// @param callCompletionCall the call is a call-back
    /// @return sfiFailure, and no call is made, when `destination` is null, outgoing calls are barred, the phone is
    ///     locked and the number is not permitted, or the server reserves appearances and none is free. Else the answer
    ///     of CSfi::CallMake.
    virtual sfiResult outgoingCallMake(std::string const& lineURI, int callID, char const* destination,
                                       bool dssDirectCall, bool bridgeCall, bool callCompletionCall) = 0;
    /// Lets an offered call ring. `keysetOnly`: on the keyset alone, and nothing is sent to the caller.
    /// @return For `keysetOnly` always sfiSuccess, also without a keyset, where nothing happens. Else the answer of
    ///     CSfi::CallAccept: sfiFailure when the call is not offered here.
    virtual sfiResult acceptCall(std::string const& lineURI, int callID, bool keysetOnly) = 0;
    /// Answers a ringing call. On an active keyset: the call that rings on the line, whatever `callID` says.
    /// @return The answer of TeamServiceKeyset::answerCall on an active keyset, else that of CSfi::CallAnswer:
    ///     sfiFailure, which is logged, when no such call rings.
    virtual sfiResult answerCall(std::string const& lineURI, int callID) = 0;
    /// Sends a ringing call on to `destination`, which must not be null.
    /// @return The answer of CSfi::CallFeature: sfiFailure when the call does not ring here or the destination is not
    ///     an address.
    virtual sfiResult deflectCall(std::string const& lineURI, int callID, char const* destination) = 0;
    /// Puts a call on hold.
    /// @param lineURI the line
    /// @param callID the call
    /// @param feature why, normally sfiFeatureHold or sfiFeatureConsultationHold; passed on unchecked
    /// @param manual asked for by hand; getManualHoldIndication answers it
    /// @return The answer of CSfi::CallFeature: sfiFailure when the call is not connected.
    virtual sfiResult holdCall(std::string const& lineURI, int callID, sfiFeature feature, bool manual) = 0;
    /// Takes a call back from hold.
    /// @return Always sfiSuccess on an active keyset, also when the call is not held. Else the answer of
    ///     CSfi::CallRetrieve: sfiFailure when this telephone does not hold the call.
    virtual sfiResult retrieveCall(std::string const& lineURI, int callID) = 0;
    /// Connects the parties of two calls with each other.
    /// @param lineURI the line of `activeCallID`
    /// @param heldCallID only logged: the call control finds the other call itself
    /// @param activeCallID the call to transfer
    /// @return The answer of CSfi::CallFeature: sfiFailure when the call is not connected or has no second call beside
    ///     it.
    virtual sfiResult attendedTransferCall(std::string const& lineURI, int heldCallID, int activeCallID) = 0;
    /// Transfers a call to `destination`, which must not be null, without asking it first.
    /// @return The answer of CSfi::CallFeature: sfiFailure when the call is not connected or the destination is not an
    ///     address.
    virtual sfiResult blindTransferCall(std::string const& lineURI, int callID, char const* destination) = 0;
    /// Sends a CSTA request of a line to the call server; `b2buaCSTAResponse` brings the answer.
    /// @return The answer of CSfi::SendCSTARequest: sfiFailure when the line is unknown or has no server, or the body
    ///     is empty.
    virtual sfiResult SendCSTARequest(std::string const& lineURI, std::string const& body) = 0;
    /// Sends a CSTA message to the call server. `lineURI` is ignored: the call control chooses the line. `body` may be
    /// changed.
    /// @return The answer of CSfi::SendUACSTAServerMessage: sfiFailure when there is no server or the body is empty.
    virtual sfiResult sendUACSTAServerMessage(std::string& lineURI, std::string& body) = 0;
    /// Starts or ends the server-based features of a line; `serverFeatureStatusChange` follows.
    /// @return The answer of CSfi::InitializeOrFinalizeServerFeatures: sfiFailure when the line is unknown or has no
    ///     server.
    virtual sfiResult InitializeOrFinalizeServerFeatures(std::string const& lineURI, bool initialize) = 0;
    /// Sets a call-back on the party of a call that is not answered.
    /// @return The answer of CSfi::ActivateCallbackRinging: no such call, its party was not ringing, one is set
    ///     already, too many.
    virtual sfiResult activateCallbackRinging(std::string const& lineURI, int callID) = 0;
    /// Sets a call-back on the party of a call that ended busy.
    /// @return The answer of CSfi::ActivateCallbackBusy: no such call, its party was not busy, one is set already, too
    ///     many.
    virtual sfiResult activateCallbackBusy(std::string const& lineURI, int callID) = 0;
    /// Cancels call-backs.
    /// @param lineURI the line
    /// @param callID limits it to the call-backs of this call; 0 or less: of any
    /// @param target limits it to one party, whatever the call; empty: any party
    /// @param type limits it to one kind
    /// @param displayOutcome whether the call view is to show it
    /// @return The answer of CSfi::CancelCallbacks: sfiFailureCallBackNoCallInfo when there is none.
    virtual sfiResult cancelCallbacks(std::string const& lineURI, int callID, std::string const& target,
                                      sfiCancelCallBackType type, bool displayOutcome) = 0;
    /// Makes a consultation call beside an active one, which is held. Unlike outgoingCallMake it does not ask whether
    /// the number may be dialled.
    /// @param lineURI the line
    /// @param callID a number for the new call
    /// @param destination a number or an address; must not be null
    /// @return The answer of CSfi::CallMake: sfiFailure when the call id is in use, the line is unknown, the
    ///     destination is not an address, or the telephone is out of service.
    virtual sfiResult consultationCall(std::string const& lineURI, int callID, char const* destination) = 0;
    /// Refuses a ringing call with the SIP status of `reason`.
    /// @return The answer of CSfi::CallRefuse: sfiFailure when the call does not ring here or the reason has no name.
    virtual sfiResult refuseCall(std::string const& lineURI, int callID, sfiRefuseCall reason) = 0;
    /// Delivers all events to `subscriber` from now on. A second time changes nothing.
    /// @return sfiFailure for null and for an executable that is not a CommunicationsServiceEventIfc.
    virtual sfiResult subscribe(Executable* subscriber) = 0;
    /// Takes over a call that rings at another telephone.
    /// @param lineURI the line
    /// @param callID a number for the new call
    /// @param callToBePickedUp number of the ringing telephone
    /// @param BLFPickup asked for by a busy-lamp key. Without it, and unless the server type is sfiServerWithPickup,
    ///     the pickup is a call to the pickup number with this number appended.
    /// @return sfiFailure when a busy-lamp pickup needs an appearance and none is free, or a pickup by number has no
    ///     number or no pickup number. Else the answer of CSfi::CallMake, TeamServiceFeatures::BLFPickupRequest or
    ///     DirectedPickupHandler::directedPickupRequest.
    virtual sfiResult directedPickupCall(std::string const& lineURI, int callID, std::string const& callToBePickedUp,
                                         bool BLFPickup) = 0;
    /// Takes over a call that rings in the group, as call `callID`, which is not in use.
    /// @return The answer of CSfi::GroupPickup: sfiFailure when no group-pickup number is configured, and as
    ///     consultationCall.
    virtual sfiResult groupPickupCall(std::string const& lineURI, int callID) = 0;
    /// Sets the state of the telephone.
    /// @return The answer of CSfi::SetServiceState: sfiFailure for a value without a name.
    virtual sfiResult setServiceState(sfiServiceState state) = 0;
    /// Reads the state of the telephone.
    /// @return The answer of CSfi::GetServiceState, normally sfiSuccess.
    virtual sfiResult getServiceState(sfiServiceState& state) = 0;
    /// Switches do-not-disturb and writes it to the configuration store; the call control hears of it when the store
    /// has accepted it. On an active keyset it is recorded for the line, and published only for the line of the present
    /// user.
    /// @param lineURI the line; without a line of that name the whole telephone
    /// @param on whether calls are refused
    /// @return sfiFailure when it is to be switched on and the feature is disabled. Else sfiSuccess, also when the
    ///     store refuses the value or does not exist; then nothing changes.
    virtual sfiResult setDoNotDisturb(std::string const& lineURI, bool on) = 0;
    /// Reads do-not-disturb of the whole telephone; `lineURI` is ignored.
    /// @return The answer of CSfi::GetDoNotDisturb, normally sfiSuccess.
    virtual sfiResult getDoNotDisturb(std::string const& lineURI, bool& on) = 0;
    /// Sets the agent state and writes it to the configuration store; the call control hears of it when the store has
    /// accepted it.
    /// @param lineURI the line; without a line of that name the whole telephone
    /// @param state one of "loggedOn", "loggedOff", "notReady", "ready", "workingAfterCall"
    /// @return sfiFailure for any other state, and for all but "loggedOff" while the agent feature is disabled. Else
    ///     sfiSuccess, also when the store refuses the value or does not exist; then nothing changes.
    virtual sfiResult setAgentState(std::string const& lineURI, std::string const& state) = 0;
    /// Mutes or unmutes the microphone, in later calls too.
    /// @return The answer of CSfi::SetMicrophoneMute, normally sfiSuccess.
    virtual sfiResult setMicrophoneMute(bool mute) = 0;
    /// Reads whether the microphone is muted.
    /// @return The answer of CSfi::GetMicrophoneMute, normally sfiSuccess.
    virtual sfiResult getMicrophoneMute(bool& mute) = 0;
    /// The user interface tells which view it shows: "CallView-Normal" goes to the call control,
    /// "MessagesPhonelet-Normal", "CallViewMWI-Normal" and "CallViewMWI-Normal-NoMessagesPhonelet" to all subscribers.
    /// @param status the view
    /// @param statusInfo more about it; must not be null, except with "CallView-Normal", which ignores it
    /// @return sfiFailure for null and for any other view, else always sfiSuccess.
    virtual sfiResult systemStatus(char const* status, char const* statusInfo) = 0;
    /// Sends digits in a call.
    /// @param lineURI the line
    /// @param callID the call
    /// @param digits one or more of 0-9, *, # and A-D; null is passed on
    /// @return The answer of CSfi::GenerateDigits: sfiFailure when the call is not connected, and for null or other
    ///     characters.
    virtual sfiResult generateDigits(std::string const& lineURI, int callID, char const* digits) = 0;
    /// Appends the identities of the devices that can be monitored: "<prime:LINE>" for each line of a keyset or for the
    /// registration of a single-line telephone, then "<groupPickup:NUMBER>" where one is configured.
    /// @return sfiFailure when a keyset appends none and `devices` was empty, or nothing is registered; else
    ///     sfiSuccess.
    virtual sfiResult getDevices(std::vector<std::string>& devices) = 0;
    /// Joins two calls into a conference.
    /// @param lineURI the line of `activeCallID`
    /// @param heldCallID only logged: the call control finds the other call itself
    /// @param activeCallID one of the calls
    /// @param feature passed on; normally sfiFeatureConference
    /// @return The answer of CSfi::CallFeature: sfiFailure unless both calls are connected and in no conference yet.
    virtual sfiResult conferenceCall(std::string const& lineURI, int heldCallID, int activeCallID,
                                     sfiFeature feature) = 0;
    /// Asks whether a call is on hold by the user's hand.
    /// @return false also for a call that is not held or does not exist.
    virtual bool getManualHoldIndication(std::string const& lineURI, int callID) = 0;
    /// Swaps the active call and the one held last, on the line if it holds one.
    /// @return The answer of CSfi::CallFeature for sfiFeatureAlternate: sfiFailure when there are not both.
    virtual sfiResult alternateCalls(std::string const& lineURI) = 0;
    /// Reads the message counts of the mailbox of the telephone's own line.
    /// @param type an sfiMWIServiceType
    /// @param newMessages not listened to, urgent ones included
    /// @param oldMessages listened to, urgent ones included
    /// @param newUrgentMessages urgent ones of the new
    /// @param oldUrgentMessages urgent ones of the old
    /// @param returnType an sfiMWIMessageReturnType
    /// @param availableInfo an sfiMWIAvailableInfo
    /// @param messagesWaiting an sfiMessagesWaiting
    /// @param voiceMailURI number or address of the mailbox; empty when there is none
    /// @return Always sfiSuccess; the numbers are zero when nothing is known.
    virtual sfiResult getMessageWaitingIndicator(int& type, unsigned int& newMessages, unsigned int& oldMessages,
                                                 unsigned int& newUrgentMessages, unsigned int& oldUrgentMessages,
                                                 int& returnType, int& availableInfo, int& messagesWaiting,
                                                 std::string& voiceMailURI) = 0;
    /// Sets whether calls that arrive on a line in use are reported with `incomingAssociatedCall`.
    /// @return Always sfiSuccess.
    virtual sfiResult setAssociatedCalls(bool associated) = 0;
    /// Sets the lamp "Hold" or "SecondAlert".
    /// @param lineURI only logged
    /// @param lampId the lamp; another name is logged as a failure
    /// @param lampMode a PhysDefs::lampMode; passed on unchecked
    /// @return Always sfiSuccess, also for an unknown lamp and without lamps.
    virtual sfiResult setLampMode(std::string const& lineURI, std::string const& lampId, int lampMode) = 0;
    /// Negotiates the media of a call again, encrypted (`secure`) or not.
    /// @return The answer of CSfi::SecurityChangeReinvite: sfiFailure when the call is not connected or cannot be
    ///     encrypted.
    virtual sfiResult makeSecurityChangeReinvite(std::string const& lineURI, int callID, bool secure) = 0;
    /// Shows a line as off the hook without a call, or no longer. A refusal is logged.
    virtual void setIsInServiceInitiatedState(std::string const& lineURI, bool initiated) = 0;
    /// Sets a forwarding rule and writes what differs from the rule in force to the configuration store. On an active
    /// keyset it is recorded for the line, and published only for the line of the present user.
    /// @param lineURI the line
    /// @param type the rule; a value without a rule is logged and ignored
    /// @param on whether the rule is on
    /// @param destination a number or an address; dropped with `on` false while the forwarding privacy is on
    /// @param cfnrRingCount rings before forwarding on no reply; used for sfiForwardNoReply only
    /// @param forceQORAUpdate writes every value, also those that do not differ
    /// @return sfiFailure without a configuration store. Else sfiSuccess, also when the store refuses a value; the rest
    ///     is written all the same.
    virtual sfiResult setForwardingConfiguration(std::string const& lineURI, sfiForwardingType type, bool on,
                                                 std::string const& destination, int cfnrRingCount,
                                                 bool forceQORAUpdate) = 0;
    /// Reads the rule in force.
    /// @param type the rule; sfiForwardAlternative cannot be read
    /// @param on whether the rule is on
    /// @param destination its destination
    /// @param cfnrRingCount rings, for sfiForwardNoReply; else left as it is
    /// @return sfiFailure for a type without a rule; the outputs are then left as they are.
    virtual sfiResult getForwardingConfiguration(sfiForwardingType type, bool& on, std::string& destination,
                                                 int& cfnrRingCount) = 0;
    /// Tells the team features the call that a feature key's action made.
    /// @param callId the text by which the application knows the call
    /// @param instanceId the key
    virtual void callbackDOFeatureCallID(std::string const& callId, int instanceId) = 0;
    /// Exists for the binary interface only.
    /// @return Always the empty text.
    virtual std::string csCommunicationsService(char const* unused) = 0;
    /// Exists for the binary interface only; does nothing.
    virtual void activateStoredFwd() = 0;

protected:
    /// Never deleted through this interface.
    ~CommunicationsServiceIfc() = default;
};
