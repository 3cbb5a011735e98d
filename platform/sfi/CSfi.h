/// @file
/// The SIP functional interface: the telephone's call control as one object with a fixed table of operations.
#pragma once

#include <string>

#include "platform/sfi/SfiTypes.h"

class AuditoryDeviceIfc;
class Executable;
class ManageableData;
class PhysicalInterfaceServiceIfc;
class SfiMCAMapper;
class SvcRTEContext;

/// Call control. The telephone defines and owns the one object; the service calls it.
///
/// Thread: any, several at once; each operation protects its own state. For the operations under "Calls" the service
/// holds Lock, except for CallMake. An operation MUST NOT wait for an event to be delivered and MUST NOT call back into
/// a service operation that takes one of the service's own locks.
///
/// Results: an operation that places, changes or ends something on the network answers before the far end does.
/// sfiSuccess then means "under way"; the outcome follows as an event of CommunicationsServiceEventIfc. The service
/// hands every sfiResult to its own caller unchanged unless stated otherwise.
///
/// A call is named by a record (sfiCallInfo) that the service owns; it is never null and is valid during the operation
/// only. An unknown call id in it is answered with sfiFailure.
///
/// The order of the declarations is binary interface and never changes; new operations are added at the end.
class CSfi
{
public:
    /// The call control of this telephone. The service asks for it anew at every use.
    /// @return Null only before the service's `init`, or for a telephone that has no call control at all. `init` is the
    ///     one place that tests it: without call control it logs a failure and leaves out Initialise, the settings and
    ///     the subscription timer. Every later request uses the object without a test, so a telephone that sends
    ///     requests MUST have one.
    static CSfi* GetInstance();

    /// @name Life
    /// @{

    /// Called by `init`, once, after SetPhysicalInterface and after the settings were loaded. `context` is the
    /// framework's and outlives this object's use of it.
    virtual void Initialise(SvcRTEContext* context) = 0;
    /// Names the executable whose `timerEvent` receives the expiries of StartTimer. Called by `init`; `service` is
    /// never null there.
    virtual void SetCommsService(Executable* service) = 0;
    /// Starts SIP operation: the lines register, calls are possible. Harmless when active already. Called with Lock
    /// held.
    /// @return sfiSuccess; sfiFailure after a final Deactivate.
    virtual sfiResult Activate() = 0;
    /// Ends SIP operation: calls are cleared, subscriptions and registrations end.
    /// @param final true from `shutdown`, without Lock: the call control cannot be activated again. false from
    ///     `deactivate`, with Lock held.
    /// @param allowAutoActivate whether the call control may start again by itself, if it can do that; the reference
    ///     telephone never does.
    /// @return sfiSuccess, also when not active.
    virtual sfiResult Deactivate(bool final, bool allowAutoActivate) = 0;
    /// Called by `init` after SetCommsService and SetAuditoryDevice, before the lines, the keyset and the team features
    /// are set up.
    virtual void Startup() = 0;
    /// Adds a receiver of events. A second subscription of the same one changes nothing. The telephone removes a
    /// subscriber before it destroys it.
    /// @return sfiSuccess; sfiFailure for null and for an executable that is not a CommunicationsServiceEventIfc.
    virtual sfiResult Subscribe(Executable* subscriber) = 0;
    /// @}

    /// @name Calls
    /// @{

    /// Places a call. The service does not hold Lock here.
    /// @param call line, appearance and the number (1 or more, not in use) that the call gets
    /// @param destination a number, which is completed with the line's domain, or a SIP address
    /// @param mode always 1; without meaning
    /// @param option always 0; without meaning
    /// @param dssDirectCall the call comes from a direct-station-select key
    /// @param bridgeCall the call joins a bridged line
    /// @param callCompletionCall the call is a call-back. The reference telephone looks at the three flags together:
    ///     when none is set and another call is active, the new one is a consultation.
    /// @param numberFlag true for an emergency number (DigitAnalysisServiceIfc::queryNumberFlag)
    /// @return sfiSuccess once the call exists; other calls are held first. sfiFailure when call control is inactive or
    ///     out of service, when the call id is in use or below 1, when the call limit is reached, when the line is
    ///     unknown or when the destination is not an address. No event follows a failure.
    virtual sfiResult CallMake(sfiCallInfo* call, std::string const& destination, int mode, int option,
                               bool dssDirectCall, bool bridgeCall, bool callCompletionCall, bool numberFlag) = 0;
    /// Takes over a call that rings in the line's pickup group, as a call to the configured group-pickup number.
    /// @return sfiSuccess once that call is under way; sfiFailure when no number is configured, and where CallMake
    ///     fails.
    virtual sfiResult GroupPickup(sfiCallInfo* call) = 0;
    /// Ends a call in any state: hangs up, cancels an unanswered outgoing call, or refuses an alerting one. An unknown
    /// `cause` counts as CSTAEventCauseNone.
    /// @return sfiSuccess, also when the far end never confirms it; sfiFailure for an unknown call.
    virtual sfiResult CallClear(sfiCallInfo* call, CSTAEventCause cause) = 0;
    /// Takes a call back from hold. An active call is held first.
    /// @return sfiSuccess once under way: `callRetrieved` or `featureFailed` follows. sfiFailure when this telephone
    ///     does not hold the call.
    virtual sfiResult CallRetrieve(sfiCallInfo* call) = 0;
    /// Lets an offered call ring (180 Ringing).
    /// @return sfiSuccess, also when it rings already; sfiFailure when the call is not offered to this telephone.
    virtual sfiResult CallAccept(sfiCallInfo* call) = 0;
    /// Answers an alerting call. An active call is held first. Not called while a keyset is active: TeamServiceKeyset
    /// answers then.
    /// @return sfiSuccess once under way; sfiFailure when the call does not alert here.
    virtual sfiResult CallAnswer(sfiCallInfo* call) = 0;
    /// Refuses an alerting call with the SIP status of `reason`.
    /// @return sfiSuccess; sfiFailure when the call does not alert here, or for an unknown reason.
    virtual sfiResult CallRefuse(sfiCallInfo* call, sfiRefuseCall reason) = 0;
    /// Applies a feature to a call: hold, alternate, transfer, conference or deflect.
    /// @param call the call; the active one for a transfer or a conference; call id 0 for sfiFeatureAlternate
    /// @param feature the feature; without `destination` anything but sfiFeatureAlternate and
    ///     sfiFeatureAttendedTransfer is a conference. A hold carries the reason number of the application's request,
    ///     -1 when it named none: the hold is recognised by the SetManualHoldIndication right before it and by the
    ///     empty `destination`.
    /// @param destination a number or address for sfiFeatureDeflect and sfiFeatureBlindTransfer; empty for a hold; null
    ///     for the features between two calls
    /// @param mode always 1; without meaning
    /// @return sfiSuccess once under way: `featureSuccess`, `callHeld` or `featureFailed` follows. sfiFailure when the
    ///     call is in the wrong state, when no second call exists for the feature, when the destination is not an
    ///     address, or for another feature with a destination.
    virtual sfiResult CallFeature(sfiCallInfo* call, sfiFeature feature, char const* destination, int mode) = 0;
    /// Announces the hold of the CallFeature that follows under the same Lock, and records whether the user asked for
    /// it by hand. Nothing for an unknown call.
    virtual void SetManualHoldIndication(sfiCallInfo* call, bool manual) = 0;
    /// Asks whether a call is on hold by the user's hand.
    /// @return Not 0 when it is; 0 (sfiFailure) when it is not held, was held for another call, or is unknown. The
    ///     service tells only 0 from other values.
    virtual sfiResult GetManualHoldIndication(sfiCallInfo* call) = 0;
    /// Sets the state of the telephone: in service, out of service (registrations end, calls are refused) or
    /// do-not-disturb (offered calls are refused). Without Lock.
    /// @return sfiSuccess; sfiFailure for a value that is not an sfiServiceState.
    virtual sfiResult SetServiceState(sfiServiceState state) = 0;
    /// Reads the state that SetServiceState set, at first sfiServiceInService. Without Lock.
    /// @return sfiSuccess.
    virtual sfiResult GetServiceState(sfiServiceState& state) = 0;
    /// Sends digits in a call, as telephone events (RFC 4733) or SIP INFO.
    /// @param call the call
    /// @param digits one or more of 0-9, *, # and A-D; may be null
    /// @return sfiSuccess; sfiFailure when the call is not connected, and for null, an empty text or other characters.
    virtual sfiResult GenerateDigits(sfiCallInfo* call, char const* digits) = 0;
    /// @}

    /// @name Call server and call-backs
    /// @{

    /// Asks the call server to start or end its features for a line; `serverFeatureStatusChange` tells the outcome.
    /// Without Lock.
    /// @return sfiSuccess once the request is sent; sfiFailure when call control is inactive, the line is unknown or
    ///     the line has no server.
    virtual sfiResult InitializeOrFinalizeServerFeatures(std::string const& lineURI, bool initialize) = 0;
    /// Sends a CSTA request of a line to the call server; `b2buaCSTAResponse` brings its answer. Without Lock. An empty
    /// `lineURI` is the first line.
    /// @return sfiSuccess once sent; sfiFailure when call control is inactive, the line is unknown or has no server, or
    ///     the body is empty.
    virtual sfiResult SendCSTARequest(std::string const& lineURI, std::string const& body) = 0;
    /// Sets a call-back on the party of an outgoing call that is not answered; the call may have ended. With Lock held.
    /// @return sfiSuccess once under way (`callCompletionEvent` follows); sfiFailureCallBackNoCallInfo for an unknown
    ///     call, sfiFailureCallBackInvalidState when its party was not ringing, sfiFailureCallBackAllreadyExists,
    ///     sfiFailureCallBackToMany; sfiFailure when the subscription could not be sent.
    virtual sfiResult ActivateCallbackRinging(sfiCallInfo* call) = 0;
    /// Sets a call-back on the party of a call that ended busy. With Lock held.
    /// @return As ActivateCallbackRinging; sfiFailureCallBackInvalidState when the party was not busy.
    virtual sfiResult ActivateCallbackBusy(sfiCallInfo* call) = 0;
    /// Cancels call-backs. With Lock held.
    /// @param call limits the cancellation to the call-backs of this call id; 0 or less, or a `target`, lifts the limit
    /// @param target limits it to one party, a number or an address; empty: any party. A copy of the application's
    ///     text, which may be changed.
    /// @param type limits it to one kind of call-back
    /// @param displayOutcome handed on in the `callCompletionEvent` of each
    /// @return sfiSuccess when at least one was cancelled, else sfiFailureCallBackNoCallInfo.
    virtual sfiResult CancelCallbacks(sfiCallInfo* call, std::string& target, sfiCancelCallBackType type,
                                      bool displayOutcome) = 0;
    /// @}

    /// @name The telephone; all without Lock
    /// @{

    /// Mutes or unmutes the microphone in every present and later call.
    /// @return sfiSuccess.
    virtual sfiResult SetMicrophoneMute(bool mute) = 0;
    /// Reads what SetMicrophoneMute set, at first false.
    /// @return sfiSuccess. The service answers `mute` whatever the result.
    virtual sfiResult GetMicrophoneMute(bool& mute) = 0;
    /// Switches do-not-disturb; `doNotDisturbSet` follows. Called once the configuration store has accepted the value,
    /// under the service's publication lock, and to end it before a permitted call from a locked phone.
    /// @param lineID line number, or 0 for the whole telephone
    /// @param on whether offered calls are refused
    /// @return sfiSuccess. The service does not look at it.
    virtual sfiResult SetDoNotDisturb(int lineID, bool on) = 0;
    /// Reads do-not-disturb of a line; for 0 whether the telephone or any line has it on. The service asks for 0 only.
    /// @return sfiSuccess.
    virtual sfiResult GetDoNotDisturb(int lineID, bool& on) = 0;
    /// Tells whether do-not-disturb may be switched on. May leave `enabled`, which is true beforehand, as it is.
    virtual void GetDNDEnabled(bool& enabled) = 0;
    /// Tells whether agent states other than "loggedOff" may be set. May leave `enabled`, which is true beforehand, as
    /// it is.
    virtual void GetAgentFeatureEnabled(bool& enabled) = 0;
    /// Takes over a valid agent state once the store has accepted it; `agentStateSet` follows. Called under the
    /// service's publication lock.
    /// @param lineID line number, or 0 for the whole telephone
    /// @param state one of "loggedOn", "loggedOff", "notReady", "ready", "workingAfterCall"
    /// @return Anything; the service does not look at it.
    virtual sfiResult SetAgentState(int lineID, std::string const& state) = 0;
    /// Passes a status text of the user interface to all subscribers (`systemStatusChange`). `option` is always 0.
    virtual void SystemStatus(std::string const& status, std::string const& statusInfo, int option) = 0;
    /// Asks whether the phone is locked. While it is, key presses are ignored and only permitted numbers are dialled.
    /// @return true while locked.
    virtual bool IsPhoneLocked() = 0;
    /// Tells the subscribers (`featureFailed`) that a feature failed: for the active call of the line, else any call of
    /// it, else call id 0.
    /// @param lineID line number; 0: any line
    /// @param feature sfiFeature as integer
    /// @param failure sfiFeatureFailure as integer
    virtual void SendFeatureFailureNotification(int lineID, int feature, int failure) = 0;
    /// Reports the headset's jack; sound then goes to the headset or away from it.
    virtual void SetHeadsetPlugged(bool plugged) = 0;
    /// A press of a key that acts on calls. The service passes PhysDefs::keyFunctionHold only: it holds the active call
    /// or, without one, retrieves the call that was held last.
    virtual void HandleKeyFunction(int keyFunction) = 0;
    /// The plug of the telephone's line was moved.
    virtual void JackEvent() = 0;
    /// The user interface shows a view. The service passes 6, the call view.
    virtual void NotifyViewState(int view) = 0;
    /// Offers one timer expiry, on the thread of `timerEvent`. Every id of the telephone arrives, ids of others MUST be
    /// ignored.
    virtual void TimerExpired(int timerId) = 0;
    /// Hands over the keys and lamps. Called by `init`; null when the telephone has none.
    virtual void SetPhysicalInterface(PhysicalInterfaceServiceIfc* physicalInterface) = 0;
    /// Hands over the sound devices. Called by `init`; null when the telephone has none.
    virtual void SetAuditoryDevice(AuditoryDeviceIfc* auditoryDevice) = 0;
    /// Puts settings into force.
    /// @param data the items; the service has removed those that the call server holds
    /// @param changed true: the store reports items it has changed already; false: data offered to the service, to be
    ///     stored
    /// @return Not 0 when applied; 0 when an item is unknown or its value is not allowed, and then nothing was applied.
    ///     For `changed` the service does not look at it.
    virtual int ApplyManageableData(ManageableData& data, bool changed) = 0;
    /// Asks for the kind of a line without line object; the service passes 0, the telephone.
    /// @return LineData::kHotWarmNone, kHotLine or kWarmLine. The service tells only greater than 0 from the rest.
    virtual int GetHotWarmLineStatus(int lineID) = 0;
    /// Asks which line always answers on the headset.
    /// @return A line number, 0 for none.
    virtual int GetLineHeadsetOverride() = 0;
    /// Reads the message counts of the mailbox of a number or address; empty: of the first line.
    /// @return sfiSuccess; sfiFailure when the line is unknown or the server has not reported yet. `record`, all zero
    ///     beforehand, is then left as it is; the service answers success in either case.
    virtual sfiResult GetMessageWaitingIndicator(std::string const& phoneNumber, sfiMessageWaitingRecord& record) = 0;
    /// Sets whether a call that arrives on a line in use is reported as associated with the present one
    /// (`incomingAssociatedCall`).
    virtual void SetAssociatedCalls(bool associated) = 0;
    /// @}

    /// Takes the lock of the call control, waiting without limit. MUST be recursive and usable from any thread. The
    /// order is: one of the service's own locks, then this one, then any lock that protects a single container.
    virtual void Lock() = 0;
    /// Gives the lock back, on the thread that took it. Work that was asked for goes out at once.
    virtual void Unlock() = 0;
    /// Starts a one-shot timer. Its expiry arrives at `timerEvent` of the executable of SetCommsService, with no lock
    /// held.
    /// @param milliseconds the time; less than 0 counts as 0
    /// @return Its id, greater than 0 and unlike that of every running timer.
    virtual int StartTimer(int milliseconds) = 0;
    /// Negotiates the media of a connected call again. With Lock held.
    /// @param call the call
    /// @param secure whether encrypted audio is wanted
    /// @return sfiSuccess once under way; sfiFailure when the call is not connected, or when encrypted audio is not
    ///     possible.
    virtual sfiResult SecurityChangeReinvite(sfiCallInfo* call, bool secure) = 0;
    /// Called by `init` as its last step, after StartTimer.
    virtual void Start() = 0;
    /// The programmable keys can be used from now on. Called on the key thread.
    virtual void NotifyFPKAvailable() = 0;
    /// Sends a CSTA message of the first line to the call server. Without Lock.
    /// @return As SendCSTARequest; a text request is answered with the same text whatever it is.
    virtual sfiResult SendUACSTAServerMessage(std::string& body) = 0;
    /// The table of calls on multi-call-appearance lines.
    /// @return Null when the telephone has none; owned by the telephone, valid until it ends.
    virtual SfiMCAMapper* GetMCAMapper() = 0;
    /// Tells the line of the calls of a Bluetooth device. Asked for call ids 10000 to 10500 on the line
    /// "bluetoothDeviceID".
    /// @param device always 0
    /// @param lineURI receives the line identifier; empty: there is no such device
    /// @param name receives the device's name
    virtual void GetBluetoothLineURI(int device, std::string& lineURI, std::string& name) = 0;
    /// Asks which outgoing calls are allowed.
    /// @return kDialBarred when none is, emergency calls included; any other value restricts nothing here.
    virtual int GetDialRestrictionMode() = 0;
    /// Brackets the writing of forwarding settings: true before, false after, on every path. Applications should not
    /// read the rules in between. true arrives before the service takes its publication lock.
    virtual void setCFChangesPending(bool pending) = 0;

    /// GetDialRestrictionMode: every outgoing call is forbidden.
    static constexpr int kDialBarred = 4;

protected:
    /// Never deleted through this interface.
    ~CSfi() = default;
};
