// The SIP functional interface: the telephone's call-control stack as one object with a fixed table of operations.
// The telephone owns the singleton. Operations may be called from any thread; the order of the declarations is binary
// interface and never changes, new operations are added at the end.
#pragma once

#include <string>

#include "platform/sfi/SfiTypes.h"

class AuditoryDeviceIfc;
class Executable;
class ManageableData;
class PhysicalInterfaceServiceIfc;
class SfiMCAMapper;
class SvcRTEContext;

class CSfi
{
public:
    // The only accessor that may return null: a telephone without call control.
    static CSfi* GetInstance();

    virtual void Initialise(SvcRTEContext* context) = 0;
    // The executable that timer expiries are delivered through.
    virtual void SetCommsService(Executable* service) = 0;
    virtual sfiResult Activate() = 0;
    // `final`: the stack ends for good; `allowAutoActivate`: it may come back by itself.
    virtual sfiResult Deactivate(bool final, bool allowAutoActivate) = 0;
    virtual void Startup() = 0;
    // Adds a receiver of CommunicationsServiceEventIfc events. A second subscription of the same one changes nothing.
    virtual sfiResult Subscribe(Executable* subscriber) = 0;
    // Places a call. The service passes 1 and 0 for `mode` and `option`; it does not bracket this operation with Lock.
    virtual sfiResult CallMake(sfiCallInfo* call, std::string const& destination, int mode, int option,
                               bool dssDirectCall, bool bridgeCall, bool callCompletionCall, bool numberFlag) = 0;
    virtual sfiResult GroupPickup(sfiCallInfo* call) = 0;
    virtual sfiResult CallClear(sfiCallInfo* call, CSTAEventCause cause) = 0;
    virtual sfiResult CallRetrieve(sfiCallInfo* call) = 0;
    // Lets an offered call ring.
    virtual sfiResult CallAccept(sfiCallInfo* call) = 0;
    virtual sfiResult CallAnswer(sfiCallInfo* call) = 0;
    virtual sfiResult CallRefuse(sfiCallInfo* call, sfiRefuseCall reason) = 0;
    // Hold, alternate, transfer, conference, deflect. `destination` is a number, the empty text or null. The service
    // passes 1 for `mode`.
    virtual sfiResult CallFeature(sfiCallInfo* call, sfiFeature feature, char const* destination, int mode) = 0;
    // Whether the hold that follows was asked for by hand.
    virtual void SetManualHoldIndication(sfiCallInfo* call, bool manual) = 0;
    // Not 0 when the call was put on hold by hand.
    virtual sfiResult GetManualHoldIndication(sfiCallInfo* call) = 0;
    virtual sfiResult SetServiceState(sfiServiceState state) = 0;
    virtual sfiResult GetServiceState(sfiServiceState& state) = 0;
    virtual sfiResult GenerateDigits(sfiCallInfo* call, char const* digits) = 0;
    virtual sfiResult InitializeOrFinalizeServerFeatures(std::string const& lineURI, bool initialize) = 0;
    virtual sfiResult SendCSTARequest(std::string const& lineURI, std::string const& body) = 0;
    virtual sfiResult ActivateCallbackRinging(sfiCallInfo* call) = 0;
    virtual sfiResult ActivateCallbackBusy(sfiCallInfo* call) = 0;
    virtual sfiResult CancelCallbacks(sfiCallInfo* call, std::string& target, sfiCancelCallBackType type,
                                      bool displayOutcome) = 0;
    virtual sfiResult SetMicrophoneMute(bool mute) = 0;
    virtual sfiResult GetMicrophoneMute(bool& mute) = 0;
    // Line number 0 is the whole phone.
    virtual sfiResult SetDoNotDisturb(int lineID, bool on) = 0;
    virtual sfiResult GetDoNotDisturb(int lineID, bool& on) = 0;
    // May leave `enabled` as it is: the feature then stays enabled.
    virtual void GetDNDEnabled(bool& enabled) = 0;
    virtual void GetAgentFeatureEnabled(bool& enabled) = 0;
    virtual sfiResult SetAgentState(int lineID, std::string const& state) = 0;
    virtual void SystemStatus(std::string const& status, std::string const& statusInfo, int option) = 0;
    // True while the phone is locked.
    virtual bool IsPhoneLocked() = 0;
    // Tells the subscribers that a feature failed on a line (sfiFeature, sfiFeatureFailure as integers).
    virtual void SendFeatureFailureNotification(int lineID, int feature, int failure) = 0;
    virtual void SetHeadsetPlugged(bool plugged) = 0;
    virtual void HandleKeyFunction(int keyFunction) = 0;
    virtual void JackEvent() = 0;
    virtual void NotifyViewState(int view) = 0;
    // Offers one timer expiry; ids that are not its own are ignored.
    virtual void TimerExpired(int timerId) = 0;
    virtual void SetPhysicalInterface(PhysicalInterfaceServiceIfc* physicalInterface) = 0;
    virtual void SetAuditoryDevice(AuditoryDeviceIfc* auditoryDevice) = 0;
    // Applies settings; `changed` tells a notice of the store (true) from data handed to the service (false).
    // Not 0 when they were applied.
    virtual int ApplyManageableData(ManageableData& data, bool changed) = 0;
    virtual int GetHotWarmLineStatus(int lineID) = 0;
    virtual int GetLineHeadsetOverride() = 0;
    virtual sfiResult GetMessageWaitingIndicator(std::string const& phoneNumber, sfiMessageWaitingRecord& record) = 0;
    virtual void SetAssociatedCalls(bool associated) = 0;
    // The recursive lock of the call control; brackets the call operations.
    virtual void Lock() = 0;
    virtual void Unlock() = 0;
    // Starts a one-shot timer of so many milliseconds; returns its id, never 0.
    virtual int StartTimer(int milliseconds) = 0;
    virtual sfiResult SecurityChangeReinvite(sfiCallInfo* call, bool secure) = 0;
    virtual void Start() = 0;
    // The programmable keys can be used from now on.
    virtual void NotifyFPKAvailable() = 0;
    virtual sfiResult SendUACSTAServerMessage(std::string& body) = 0;
    virtual SfiMCAMapper* GetMCAMapper() = 0;
    // The line of the Bluetooth device's calls; `device` is always 0, `name` is the device's.
    virtual void GetBluetoothLineURI(int device, std::string& lineURI, std::string& name) = 0;
    // kDialBarred forbids every outgoing call.
    virtual int GetDialRestrictionMode() = 0;
    // Forwarding settings are being written; applications should not read them yet.
    virtual void setCFChangesPending(bool pending) = 0;

    static constexpr int kDialBarred = 4;

protected:
    ~CSfi() = default;
};
