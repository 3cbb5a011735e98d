// CSfi over the call engine, the lines, the settings, the event dispatcher and the timers: translates the platform's
// operations to theirs. The composition root owns the one object, made after all it refers to; while it lives it is
// CSfi::GetInstance(). Any thread; operations on calls take the phone lock.
//
// An operation that is refused answers a failure, and its refusal is reported.
#pragma once

#include <atomic>
#include <chrono>
#include <optional>
#include <string>

#include "platform/sfi/CSfi.h"
#include "telephone/calls/CallEngine.h"
#include "telephone/framework/OnlyObject.h"

namespace telephone {

class AppearanceMap;
class EventDispatcher;
class Lines;
class Settings;
class SettingsCallPolicy;
class TimerService;

class Sfi final : public CSfi
{
public:
    struct Parts
    {
        CallEngine& engine;
        Lines& lines;
        SettingsCallPolicy& policy;
        Settings& settings;
        EventDispatcher& events;
        TimerService& timers;
        AppearanceMap* appearances;  // null: no line has appearances
    };

    explicit Sfi(Parts const& parts);

    // --- life
    void Initialise(SvcRTEContext* context) override;
    void SetCommsService(Executable* service) override;
    sfiResult Activate() override;
    sfiResult Deactivate(bool final, bool allowAutoActivate) override;
    void Startup() override;
    sfiResult Subscribe(Executable* subscriber) override;

    // --- calls
    sfiResult CallMake(sfiCallInfo* call, std::string const& destination, int mode, int option, bool dssDirectCall,
                       bool bridgeCall, bool callCompletionCall, bool numberFlag) override;
    sfiResult GroupPickup(sfiCallInfo* call) override;
    sfiResult CallClear(sfiCallInfo* call, CSTAEventCause cause) override;
    sfiResult CallRetrieve(sfiCallInfo* call) override;
    sfiResult CallAccept(sfiCallInfo* call) override;
    sfiResult CallAnswer(sfiCallInfo* call) override;
    sfiResult CallRefuse(sfiCallInfo* call, sfiRefuseCall reason) override;
    sfiResult CallFeature(sfiCallInfo* call, sfiFeature feature, char const* destination, int mode) override;
    void SetManualHoldIndication(sfiCallInfo* call, bool manual) override;
    sfiResult GetManualHoldIndication(sfiCallInfo* call) override;
    sfiResult SetServiceState(sfiServiceState state) override;
    sfiResult GetServiceState(sfiServiceState& state) override;
    sfiResult GenerateDigits(sfiCallInfo* call, char const* digits) override;
    sfiResult InitializeOrFinalizeServerFeatures(std::string const& lineURI, bool initialize) override;
    sfiResult SendCSTARequest(std::string const& lineURI, std::string const& body) override;
    sfiResult ActivateCallbackRinging(sfiCallInfo* call) override;
    sfiResult ActivateCallbackBusy(sfiCallInfo* call) override;
    sfiResult CancelCallbacks(sfiCallInfo* call, std::string& target, sfiCancelCallBackType type,
                              bool displayOutcome) override;

    // --- the telephone
    sfiResult SetMicrophoneMute(bool mute) override;
    sfiResult GetMicrophoneMute(bool& mute) override;
    sfiResult SetDoNotDisturb(int lineID, bool on) override;
    sfiResult GetDoNotDisturb(int lineID, bool& on) override;
    void GetDNDEnabled(bool& enabled) override;
    void GetAgentFeatureEnabled(bool& enabled) override;
    sfiResult SetAgentState(int lineID, std::string const& state) override;
    void SystemStatus(std::string const& status, std::string const& statusInfo, int option) override;
    bool IsPhoneLocked() override;
    void SendFeatureFailureNotification(int lineID, int feature, int failure) override;
    void SetHeadsetPlugged(bool plugged) override;
    void HandleKeyFunction(int keyFunction) override;
    void JackEvent() override;
    void NotifyViewState(int) override {}                                // the call control has no display
    void TimerExpired(int) override {}                                   // nor timers of this kind
    void SetPhysicalInterface(PhysicalInterfaceServiceIfc*) override {}  // keys and lamps use the lines
    void SetAuditoryDevice(AuditoryDeviceIfc* auditoryDevice) override { auditoryDevice_ = auditoryDevice; }
    int ApplyManageableData(ManageableData& data, bool changed) override;
    int GetHotWarmLineStatus(int lineID) override;
    int GetLineHeadsetOverride() override;
    sfiResult GetMessageWaitingIndicator(std::string const& phoneNumber, sfiMessageWaitingRecord& record) override;
    void SetAssociatedCalls(bool associated) override;
    void Lock() override { engine_.lock(); }
    void Unlock() override { engine_.unlock(); }
    int StartTimer(int milliseconds) override;
    sfiResult SecurityChangeReinvite(sfiCallInfo* call, bool secure) override;
    void Start() override;
    void NotifyFPKAvailable() override;
    sfiResult SendUACSTAServerMessage(std::string& body) override;
    SfiMCAMapper* GetMCAMapper() override;
    void GetBluetoothLineURI(int device, std::string& lineURI, std::string& name) override;
    int GetDialRestrictionMode() override;
    void setCFChangesPending(bool) override {}  // each forwarding rule is read when it applies

private:
    void releaseUnlessExists(sfiCallInfo const& call);
    sfiResult resultFor(sfiCallInfo const& call, Outcome<> const& outcome);
    sfiResult callBackResultFor(sfiCallInfo const& call, Outcome<> const& outcome);
    sfiResult otherCallFeature(sfiCallInfo const& call, sfiFeature feature);
    std::string deviceOf(int lineID) const;
    Outcome<> pressHoldKey();
    // The service ends do-not-disturb by itself for a permitted number of a locked telephone; this ends the setting,
    // too, which lamps and keys follow. Tried until it is stored.
    void endDoNotDisturbSetting(std::chrono::milliseconds after);

    CallEngine& engine_;
    Lines& lines_;
    SettingsCallPolicy& policy_;
    Settings& settings_;
    EventDispatcher& events_;
    TimerService& timers_;
    AppearanceMap* appearances_;
    std::atomic<AuditoryDeviceIfc*> auditoryDevice_{nullptr};
    std::atomic<bool> ended_{false};
    std::optional<int> holdAsked_;  // the call whose hold was announced last; under the phone lock
    OnlyObject<Sfi> const only_{*this, "call control"};
};

}  // namespace telephone
