/// @file
/// CSfi, answering "not there".
#pragma once

#include <mutex>

#include "platform/kit/Missing.h"
#include "platform/kit/Timers.h"
#include "platform/management/ManageableData.h"
#include "platform/sfi/CSfi.h"
#include "platform/sfi/SfiMCAMapper.h"

namespace kit {

/// The call control of a telephone that cannot call. The lock and the timers work: the library needs both.
///
/// A port begins here: derive from it, override Subscribe, Activate and GetServiceState, then CallMake and CallClear.
/// An override of SetCommsService, StartTimer or Deactivate calls the one here, or all three are replaced together.
///
/// Until your framework has a thread for events, send them from an override of TimerExpired: the timers' thread holds
/// no lock. Keep the id that StartTimer returns under a lock of your own, because the timer may expire at once.
class DefaultCSfi : public CSfi
{
public:
    /// Deleted by whoever made it.
    virtual ~DefaultCSfi() = default;

    void Initialise(SvcRTEContext* /*context*/) override
    {
        kMissing.report("Initialise", "prepare the call control; keep the context");
    }
    void SetCommsService(Executable* service) override { timers_.deliverTo(service); }
    sfiResult Activate() override
    {
        kMissing.report("Activate", "start SIP operation and register the lines");
        return sfiFailure;
    }
    sfiResult Deactivate(bool final, bool /*allowAutoActivate*/) override
    {
        if (final) {
            timers_.end();
        }
        kMissing.report("Deactivate", "end calls, subscriptions and registrations");
        return sfiSuccess;
    }
    void Startup() override
    {
        kMissing.report("Startup", "do what must happen before lines and team features are set up");
    }
    sfiResult Subscribe(Executable* /*subscriber*/) override
    {
        kMissing.report("Subscribe", "keep the receiver, and tell it each event");
        return sfiFailure;
    }
    sfiResult CallMake(sfiCallInfo* /*call*/, std::string const& /*destination*/, int /*mode*/, int /*option*/,
                       bool /*dssDirectCall*/, bool /*bridgeCall*/, bool /*callCompletionCall*/,
                       bool /*numberFlag*/) override
    {
        kMissing.report("CallMake", "place a call");
        return sfiFailure;
    }
    sfiResult GroupPickup(sfiCallInfo* /*call*/) override
    {
        kMissing.report("GroupPickup", "take over a call of the pickup group");
        return sfiFailure;
    }
    sfiResult CallClear(sfiCallInfo* /*call*/, CSTAEventCause /*cause*/) override
    {
        kMissing.report("CallClear", "end the call, whatever its state");
        return sfiFailure;
    }
    sfiResult CallRetrieve(sfiCallInfo* /*call*/) override
    {
        kMissing.report("CallRetrieve", "take the call back from hold");
        return sfiFailure;
    }
    sfiResult CallAccept(sfiCallInfo* /*call*/) override
    {
        kMissing.report("CallAccept", "let the offered call ring");
        return sfiFailure;
    }
    sfiResult CallAnswer(sfiCallInfo* /*call*/) override
    {
        kMissing.report("CallAnswer", "answer the alerting call");
        return sfiFailure;
    }
    sfiResult CallRefuse(sfiCallInfo* /*call*/, sfiRefuseCall /*reason*/) override
    {
        kMissing.report("CallRefuse", "refuse the alerting call with the status of the reason");
        return sfiFailure;
    }
    sfiResult CallFeature(sfiCallInfo* /*call*/, sfiFeature /*feature*/, char const* /*destination*/,
                          int /*mode*/) override
    {
        kMissing.report("CallFeature", "hold, alternate, transfer, join or deflect");
        return sfiFailure;
    }
    void SetManualHoldIndication(sfiCallInfo* /*call*/, bool /*manual*/) override
    {
        kMissing.report("SetManualHoldIndication", "remember whether the user asked for the hold that follows");
    }
    sfiResult GetManualHoldIndication(sfiCallInfo* /*call*/) override
    {
        kMissing.report("GetManualHoldIndication", "tell whether the user's hand holds the call");
        return sfiFailure;
    }
    sfiResult SetServiceState(sfiServiceState /*state*/) override
    {
        kMissing.report("SetServiceState", "keep the state, and stop or start registrations and calls");
        return sfiFailure;
    }
    sfiResult GetServiceState(sfiServiceState& /*state*/) override
    {
        kMissing.report("GetServiceState", "tell the state that SetServiceState has set");
        return sfiFailure;
    }
    sfiResult GenerateDigits(sfiCallInfo* /*call*/, char const* /*digits*/) override
    {
        kMissing.report("GenerateDigits", "send the digits in the call");
        return sfiFailure;
    }
    sfiResult InitializeOrFinalizeServerFeatures(std::string const& /*lineURI*/, bool /*initialize*/) override
    {
        kMissing.report("InitializeOrFinalizeServerFeatures", "ask the call server to start or end its features");
        return sfiFailure;
    }
    sfiResult SendCSTARequest(std::string const& /*lineURI*/, std::string const& /*body*/) override
    {
        kMissing.report("SendCSTARequest", "send the request to the call server");
        return sfiFailure;
    }
    sfiResult ActivateCallbackRinging(sfiCallInfo* /*call*/) override
    {
        kMissing.report("ActivateCallbackRinging", "watch the party that does not answer");
        return sfiFailure;
    }
    sfiResult ActivateCallbackBusy(sfiCallInfo* /*call*/) override
    {
        kMissing.report("ActivateCallbackBusy", "watch the busy party");
        return sfiFailure;
    }
    sfiResult CancelCallbacks(sfiCallInfo* /*call*/, std::string& /*target*/, sfiCancelCallBackType /*type*/,
                              bool /*displayOutcome*/) override
    {
        kMissing.report("CancelCallbacks", "cancel the call-backs of the call or party");
        return sfiFailure;
    }
    sfiResult SetMicrophoneMute(bool /*mute*/) override
    {
        kMissing.report("SetMicrophoneMute", "mute the microphone in every call");
        return sfiFailure;
    }
    sfiResult GetMicrophoneMute(bool& /*mute*/) override
    {
        kMissing.report("GetMicrophoneMute", "tell whether the microphone is muted");
        return sfiFailure;
    }
    sfiResult SetDoNotDisturb(int /*lineID*/, bool /*on*/) override
    {
        kMissing.report("SetDoNotDisturb", "refuse offered calls, and send doNotDisturbSet");
        return sfiFailure;
    }
    sfiResult GetDoNotDisturb(int /*lineID*/, bool& /*on*/) override
    {
        kMissing.report("GetDoNotDisturb", "tell whether do-not-disturb is on");
        return sfiFailure;
    }
    void GetDNDEnabled(bool& /*enabled*/) override
    {
        kMissing.report("GetDNDEnabled", "tell whether do-not-disturb may be switched on");
    }
    void GetAgentFeatureEnabled(bool& /*enabled*/) override
    {
        kMissing.report("GetAgentFeatureEnabled", "tell whether agents may log on");
    }
    sfiResult SetAgentState(int /*lineID*/, std::string const& /*state*/) override
    {
        kMissing.report("SetAgentState", "keep the state, and send agentStateSet");
        return sfiFailure;
    }
    void SystemStatus(std::string const& /*status*/, std::string const& /*statusInfo*/, int /*option*/) override
    {
        kMissing.report("SystemStatus", "send systemStatusChange to all subscribers");
    }
    bool IsPhoneLocked() override
    {
        kMissing.report("IsPhoneLocked", "tell whether the phone is locked");
        return false;
    }
    void SendFeatureFailureNotification(int /*lineID*/, int /*feature*/, int /*failure*/) override
    {
        kMissing.report("SendFeatureFailureNotification", "send featureFailed to all subscribers");
    }
    void SetHeadsetPlugged(bool /*plugged*/) override
    {
        kMissing.report("SetHeadsetPlugged", "send sound to the headset or away from it");
    }
    void HandleKeyFunction(int /*keyFunction*/) override
    {
        kMissing.report("HandleKeyFunction", "hold the active call, or retrieve the last one");
    }
    void JackEvent() override { kMissing.report("JackEvent", "look at the network again"); }
    void NotifyViewState(int /*view*/) override
    {
        kMissing.report("NotifyViewState", "note the view that the user interface shows");
    }
    void TimerExpired(int /*timerId*/) override
    {
        kMissing.report("TimerExpired", "act on the ids of your own timers, ignore the others");
    }
    void SetPhysicalInterface(PhysicalInterfaceServiceIfc* /*physicalInterface*/) override
    {
        kMissing.report("SetPhysicalInterface", "keep the keys and lamps, which may be null");
    }
    void SetAuditoryDevice(AuditoryDeviceIfc* /*auditoryDevice*/) override
    {
        kMissing.report("SetAuditoryDevice", "keep the sound device, which may be null");
    }
    int ApplyManageableData(ManageableData& /*data*/, bool /*changed*/) override
    {
        kMissing.report("ApplyManageableData", "put the settings into force");
        return 0;
    }
    int GetHotWarmLineStatus(int /*lineID*/) override
    {
        kMissing.report("GetHotWarmLineStatus", "tell whether the telephone dials by itself");
        return 0;
    }
    int GetLineHeadsetOverride() override
    {
        kMissing.report("GetLineHeadsetOverride", "tell which line always answers on the headset");
        return 0;
    }
    sfiResult GetMessageWaitingIndicator(std::string const& /*phoneNumber*/,
                                         sfiMessageWaitingRecord& /*record*/) override
    {
        kMissing.report("GetMessageWaitingIndicator", "tell the message counts of the mailbox");
        return sfiFailure;
    }
    void SetAssociatedCalls(bool /*associated*/) override
    {
        kMissing.report("SetAssociatedCalls", "note whether a second call is reported as associated");
    }
    void Lock() override { lock_.lock(); }
    void Unlock() override { lock_.unlock(); }
    int StartTimer(int milliseconds) override { return timers_.start(milliseconds); }
    sfiResult SecurityChangeReinvite(sfiCallInfo* /*call*/, bool /*secure*/) override
    {
        kMissing.report("SecurityChangeReinvite", "negotiate the media again");
        return sfiFailure;
    }
    void Start() override { kMissing.report("Start", "do what must happen last in init"); }
    void NotifyFPKAvailable() override
    {
        kMissing.report("NotifyFPKAvailable", "note that the programmable keys can be used");
    }
    sfiResult SendUACSTAServerMessage(std::string& /*body*/) override
    {
        kMissing.report("SendUACSTAServerMessage", "send the message to the call server");
        return sfiFailure;
    }
    SfiMCAMapper* GetMCAMapper() override
    {
        kMissing.report("GetMCAMapper", "return the table of appearances, if lines have any");
        return nullptr;
    }
    void GetBluetoothLineURI(int /*device*/, std::string& /*lineURI*/, std::string& /*name*/) override
    {
        kMissing.report("GetBluetoothLineURI", "tell the line of the Bluetooth device, if there is one");
    }
    int GetDialRestrictionMode() override
    {
        kMissing.report("GetDialRestrictionMode", "return kDialBarred while no call may be made");
        return 0;
    }
    void setCFChangesPending(bool /*pending*/) override
    {
        kMissing.report("setCFChangesPending", "keep applications from reading rules that are being written");
    }

private:
    static constexpr Missing kMissing{"CSfi", "platform/sfi/CSfi.h"};

    std::recursive_mutex lock_;
    Timers timers_;
};

}  // namespace kit
