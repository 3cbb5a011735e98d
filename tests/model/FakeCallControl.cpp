// The SIP functional interface and the table of appearances, answered from the calling thread's world.
#include "World.h"
#include "platform/management/ManageableData.h"
#include "platform/sfi/CSfi.h"
#include "platform/sfi/SfiMCAMapper.h"

using effect_text::of;

namespace {
World& world()
{
    return World::current();
}

void did(std::string what)
{
    world().effect(std::move(what));
}

sfiResult answered(std::string what)
{
    did(std::move(what));
    return world().answer;
}

class FakeMapper final : public SfiMCAMapper
{
public:
    void assignCallToLine(int lineID, int callID, int& appearanceIndex) override
    {
        did(of("assign", lineID, callID, appearanceIndex));
        appearanceIndex = world().chosenAppearance(lineID, appearanceIndex);
        world().mappings[callID] = {lineID, appearanceIndex};
    }
    int findFirstFreeVirtualLine(int /*lineID*/) const override { return world().freeVirtualLine; }
    bool findVirtualLineforCallID(int callID, int& lineID, int& appearanceIndex) const override
    {
        auto const found = world().mappings.find(callID);
        if (found == world().mappings.end()) {
            return false;
        }
        lineID = found->second.first;
        appearanceIndex = found->second.second;
        return true;
    }
};

class FakeCallControl final : public CSfi
{
public:
    void Initialise(SvcRTEContext* context) override { did(of("Initialise", context != nullptr)); }
    void SetCommsService(Executable* service) override { did(of("SetCommsService", service != nullptr)); }
    sfiResult Activate() override { return answered("Activate()"); }
    sfiResult Deactivate(bool final, bool allowAutoActivate) override
    {
        return answered(of("Deactivate", final, allowAutoActivate));
    }
    void Startup() override { did("Startup()"); }
    sfiResult Subscribe(Executable* subscriber) override { return answered(of("Subscribe", subscriber != nullptr)); }
    sfiResult CallMake(sfiCallInfo* call, std::string const& destination, int mode, int option, bool dssDirectCall,
                       bool bridgeCall, bool callCompletionCall, bool numberFlag) override
    {
        return answered(of("CallMake", *call, destination, mode, option, dssDirectCall, bridgeCall, callCompletionCall,
                           numberFlag));
    }
    sfiResult GroupPickup(sfiCallInfo* call) override { return answered(of("GroupPickup", *call)); }
    sfiResult CallClear(sfiCallInfo* call, CSTAEventCause cause) override
    {
        return answered(of("CallClear", *call, cause));
    }
    sfiResult CallRetrieve(sfiCallInfo* call) override { return answered(of("CallRetrieve", *call)); }
    sfiResult CallAccept(sfiCallInfo* call) override { return answered(of("CallAccept", *call)); }
    sfiResult CallAnswer(sfiCallInfo* call) override { return answered(of("CallAnswer", *call)); }
    sfiResult CallRefuse(sfiCallInfo* call, sfiRefuseCall reason) override
    {
        return answered(of("CallRefuse", *call, reason));
    }
    sfiResult CallFeature(sfiCallInfo* call, sfiFeature feature, char const* destination, int mode) override
    {
        return answered(of("CallFeature", *call, feature, destination, mode));
    }
    void SetManualHoldIndication(sfiCallInfo* call, bool manual) override { did(of("SetManualHold", *call, manual)); }
    sfiResult GetManualHoldIndication(sfiCallInfo* call) override { return answered(of("GetManualHold", *call)); }
    sfiResult SetServiceState(sfiServiceState state) override { return answered(of("SetServiceState", state)); }
    sfiResult GetServiceState(sfiServiceState& state) override
    {
        state = static_cast<sfiServiceState>(world().number);
        return world().answer;
    }
    sfiResult GenerateDigits(sfiCallInfo* call, char const* digits) override
    {
        return answered(of("GenerateDigits", *call, digits));
    }
    sfiResult InitializeOrFinalizeServerFeatures(std::string const& lineURI, bool initialize) override
    {
        return answered(of("ServerFeatures", lineURI, initialize));
    }
    sfiResult SendCSTARequest(std::string const& lineURI, std::string const& body) override
    {
        return answered(of("SendCSTARequest", lineURI, body));
    }
    sfiResult ActivateCallbackRinging(sfiCallInfo* call) override { return answered(of("CallbackRinging", *call)); }
    sfiResult ActivateCallbackBusy(sfiCallInfo* call) override { return answered(of("CallbackBusy", *call)); }
    sfiResult CancelCallbacks(sfiCallInfo* call, std::string& target, sfiCancelCallBackType type,
                              bool displayOutcome) override
    {
        return answered(of("CancelCallbacks", *call, target, type, displayOutcome));
    }
    sfiResult SetMicrophoneMute(bool mute) override { return answered(of("SetMute", mute)); }
    sfiResult GetMicrophoneMute(bool& mute) override
    {
        mute = world().yes;
        return world().answer;
    }
    sfiResult SetDoNotDisturb(int lineID, bool on) override { return answered(of("SetDoNotDisturb", lineID, on)); }
    sfiResult GetDoNotDisturb(int lineID, bool& on) override
    {
        on = lineID == 0 && world().dndActive;
        return world().answer;
    }
    void GetDNDEnabled(bool& enabled) override { enabled = world().dndEnabledAnswered ? world().dndEnabled : enabled; }
    void GetAgentFeatureEnabled(bool& enabled) override { enabled = world().agentEnabled; }
    sfiResult SetAgentState(int lineID, std::string const& state) override
    {
        return answered(of("SetAgentState", lineID, state));
    }
    void SystemStatus(std::string const& status, std::string const& statusInfo, int option) override
    {
        did(of("SystemStatus", status, statusInfo, option));
    }
    bool IsPhoneLocked() override { return world().phoneLocked; }
    void SendFeatureFailureNotification(int lineID, int feature, int failure) override
    {
        did(of("FeatureFailure", lineID, feature, failure));
    }
    void SetHeadsetPlugged(bool plugged) override { did(of("SetHeadsetPlugged", plugged)); }
    void HandleKeyFunction(int keyFunction) override { did(of("HandleKeyFunction", keyFunction)); }
    void JackEvent() override { did("JackEvent()"); }
    void NotifyViewState(int view) override { did(of("NotifyViewState", view)); }
    void TimerExpired(int timerId) override { did(of("TimerExpired", timerId)); }
    void SetPhysicalInterface(PhysicalInterfaceServiceIfc* physicalInterface) override
    {
        did(of("SetPhysicalInterface", physicalInterface != nullptr));
    }
    void SetAuditoryDevice(AuditoryDeviceIfc* auditoryDevice) override
    {
        did(of("SetAuditoryDevice", auditoryDevice != nullptr));
    }
    int ApplyManageableData(ManageableData& data, bool changed) override
    {
        DxlCollection ids;
        data.getRootIds(ids);
        std::string list;
        for (std::size_t row = 0; row < ids.size(); ++row) {
            list += ids.value(row, ManageableData::kRootId) + " ";
        }
        did(of("apply", list, changed));
        return world().applyAnswer;
    }
    int GetHotWarmLineStatus(int lineID) override { return lineID == 0 ? world().number : -1; }
    int GetLineHeadsetOverride() override { return world().number; }
    sfiResult GetMessageWaitingIndicator(std::string const& phoneNumber, sfiMessageWaitingRecord& record) override
    {
        did(of("GetMessageWaiting", phoneNumber, record.type, record.newMessages, record.messagesWaiting));
        record = {1, 2, 3, 4, 5, 6, 7, 8};
        return world().answer;
    }
    void SetAssociatedCalls(bool associated) override { did(of("SetAssociatedCalls", associated)); }
    void Lock() override
    {
        did("Lock()");
        ++world().callControlDepth;
    }
    void Unlock() override
    {
        did("Unlock()");
        if (--world().callControlDepth < 0) {
            world().violation("the call control was unlocked by a thread that does not hold it");
        }
    }
    int StartTimer(int milliseconds) override
    {
        did(of("StartTimer", milliseconds));
        return 4200 + world().number;
    }
    sfiResult SecurityChangeReinvite(sfiCallInfo* call, bool secure) override
    {
        return answered(of("SecurityChange", *call, secure));
    }
    void Start() override { did("Start()"); }
    void NotifyFPKAvailable() override { did("NotifyFPKAvailable()"); }
    sfiResult SendUACSTAServerMessage(std::string& body) override { return answered(of("UACSTAMessage", body)); }
    SfiMCAMapper* GetMCAMapper() override
    {
        static FakeMapper mapper;
        return world().hasMapper ? &mapper : nullptr;
    }
    void GetBluetoothLineURI(int device, std::string& lineURI, std::string& name) override
    {
        lineURI = device == 0 ? world().bluetoothLine : "wrong device";
        name = "headset";
    }
    int GetDialRestrictionMode() override { return world().dialRestriction; }
    void setCFChangesPending(bool pending) override { did(of("pending", pending)); }
};
}  // namespace

CSfi* CSfi::GetInstance()
{
    static FakeCallControl instance;
    return world().callControl ? &instance : nullptr;
}
