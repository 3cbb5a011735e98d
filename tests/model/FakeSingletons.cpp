// The platform's singletons and free functions. They keep no state: answers come from the calling thread's world, which
// also records what is done to them.
#include "World.h"
#include "platform/framework/Serializer.h"
#include "platform/lines/ClientUtils.h"
#include "platform/lines/LineManager.h"
#include "platform/lines/Utility.h"
#include "platform/management/ManageableData.h"
#include "platform/recording/MediaRecordingService.h"
#include "platform/recording/RecordingConfigManager.h"
#include "platform/sfi/CSfi.h"
#include "platform/sfi/SfiConfiguration.h"
#include "platform/sfi/SfiMCAMapper.h"
#include "platform/team/DirectedPickupHandler.h"
#include "platform/team/EACockpitHandler.h"
#include "platform/team/FeatureToggle.h"
#include "platform/team/TeamServiceFeatures.h"
#include "platform/team/TeamServiceKeyset.h"

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

class FakeLineManager final : public LineManager
{
public:
    void initialise() override { did("lines.initialise()"); }
    bool isMCALine(std::string const& baseURI) override { return world().multiAppearanceLines.count(baseURI) != 0; }
    Line* getLine(std::string const& lineURI) override
    {
        if (lineURI.empty()) {
            return nullptr;
        }
        return world().line(lineURI);
    }
    Line* getDSSLineForFPK(int keyNumber) override
    {
        return world().dssKeys.count(keyNumber) == 0 ? nullptr : world().line(world().keyLines[keyNumber]);
    }
    Line* getLineForFPK(int keyNumber) override
    {
        return world().directLineKeys.count(keyNumber) == 0 ? nullptr : world().line(world().keyLines[keyNumber]);
    }
    std::string getKeysetType() override { return world().keysetType; }
    void getDeviceList(std::vector<std::string>& devices) override
    {
        devices.insert(devices.end(), world().deviceList.begin(), world().deviceList.end());
    }
    std::string getLocalHeldLine() override { return world().localHeldLine; }
    Line* getLineInState(ELineState state, std::string const& baseURI) override
    {
        return world().lineInState(state, baseURI);
    }
    bool isLocallyIdleLine() override { return world().yes; }
    bool observe(Executable* /*observer*/) override
    {
        did("lines.observe()");
        return world().yes;
    }
    void requestOverviewData(std::string const& lineURI) override { did(of("lines.requestOverviewData", lineURI)); }
    void setPhysicalInterface(PhysicalInterfaceServiceIfc* physicalInterface) override
    {
        did(of("lines.setPhysicalInterface", physicalInterface != nullptr));
    }
    void setDigitAnalysisService(DigitAnalysisServiceIfc* digitAnalysis) override
    {
        did(of("lines.setDigitAnalysis", digitAnalysis != nullptr));
    }
    int getFPKforUri(std::string const& /*lineURI*/) override { return world().number; }
    std::string getURIforFPK(int keyNumber) override
    {
        auto const found = world().keyLines.find(keyNumber);
        return found == world().keyLines.end() ? std::string() : found->second;
    }
    bool lineConsideredAsPrivate(std::string const& /*lineURI*/) override { return world().yes; }
};

class FakeKeyset final : public TeamServiceKeyset
{
public:
    bool isKeysetActive() override { return world().keysetActive; }
    void setCommsSrv(SvcRTEContext* context, Executable* service) override
    {
        did(of("keyset.setCommsSrv", context != nullptr, service != nullptr));
    }
    void init() override { did("keyset.init()"); }
    void timerExpired(int timerId) override { did(of("keyset.timerExpired", timerId)); }
    sfiResult answerCall(std::string const& lineURI) override
    {
        did(of("keyset.answerCall", lineURI));
        return world().answer;
    }
    void makeCall(std::string const& lineURI) override { did(of("keyset.makeCall", lineURI)); }
    sfiResult retrieveCall(std::string const& lineURI, int callID) override
    {
        did(of("keyset.retrieveCall", lineURI, callID));
        return world().answer;
    }
    void callStateChanged(std::string const& lineURI, sfiCallState state, int callID, int reason) override
    {
        did(of("keyset.callStateChanged", lineURI, state, callID, reason));
    }
    void callIgnored(std::string const& lineURI) override { did(of("keyset.callIgnored", lineURI)); }
    void callIsolation(std::string const& lineURI, bool on) override { did(of("keyset.callIsolation", lineURI, on)); }
    bool changeMultiUser(std::string const& lineURI) override
    {
        did(of("keyset.changeMultiUser", lineURI));
        return world().yes;
    }
    std::string getCurrentMultiUser() override { return world().currentMultiUser; }
    bool getImmediateRing() override { return world().yes; }
    void setImmediateRing(bool on, std::string& /*outcome*/) override { did(of("keyset.setImmediateRing", on)); }
    int getIncomingCallPriority(std::string const& /*lineURI*/) override { return world().number; }
    void handleButtonPressedEvent(PhysDefs::keyFunctionType function) override { did(of("keyset.button", function)); }
    void initiateBCAOutgoingCall(std::string const& lineURI, std::string const& destination) override
    {
        did(of("keyset.initiateBCA", lineURI, destination));
    }
    bool isSpoofedDummyLine(std::string const& lineURI) override { return lineURI == world().dummyLine; }
    bool dummyLine_reserve() override
    {
        did("keyset.dummyLine_reserve()");
        return world().yes;
    }
    bool reserveNextSCA(std::string const& lineURI) override
    {
        did(of("keyset.reserveNextSCA", lineURI));
        return world().yes;
    }
    bool unreserveLine(std::string const& lineURI) override
    {
        did(of("keyset.unreserveLine", lineURI));
        return world().yes;
    }
    void setIsInServiceInitiatedState(std::string const& lineURI, bool initiated) override
    {
        did(of("keyset.setIsInServiceInitiatedState", lineURI, initiated));
    }
    void terminatePreview() override { did("keyset.terminatePreview()"); }
};

class FakeCockpit final : public EACockpitHandler
{
public:
    std::string getEACockpitData(std::string const& item) override { return world().yes ? "value of " + item : ""; }
    bool setEACockpitData(std::string const& item, std::string const& value) override
    {
        did(of("cockpit.set", item, value));
        return world().yes;
    }
};

class FakeTeamFeatures final : public TeamServiceFeatures
{
public:
    void setPhysicalInterface(PhysicalInterfaceServiceIfc* physicalInterface) override
    {
        did(of("features.setPhysicalInterface", physicalInterface != nullptr));
    }
    void setLocalMgmtInterface(LocalMgmtIfc* localMgmt) override
    {
        did(of("features.setLocalMgmt", localMgmt != nullptr));
    }
    void processInvokeDOAction(int feature, int instanceId, bool on, std::string const& data) override
    {
        did(of("features.invokeDO", feature, instanceId, on, data));
    }
    void processInvokeDVAction(ZEBLocalFeaturesDefs::LF_NOTIFICATION_ID notification, int feature, int instanceId,
                               ZEBLocalFeaturesDefs::eActionType action) override
    {
        did(of("features.invokeDV", notification, feature, instanceId, action));
    }
    void callbackDOFeatureCallID(std::string const& callId, int instanceId) override
    {
        did(of("features.callbackDOFeatureCallID", callId, instanceId));
    }
    void setCommsSrv(SvcRTEContext* context, Executable* service) override
    {
        did(of("features.setCommsSrv", context != nullptr, service != nullptr));
    }
    void setCertMgmtInterface(CertificateMgmtSvcIfc* certificateMgmt) override
    {
        did(of("features.setCertMgmt", certificateMgmt != nullptr));
    }
    void Activate() override { did("features.Activate()"); }
    void timerExpired(int timerId) override { did(of("features.timerExpired", timerId)); }
    void HandleButtonPressedEvent(int key, PhysDefs::keyFunctionType function, PhysDefs::actionType action) override
    {
        did(of("features.button", key, function, action));
    }
    void HandleForwardingAlternative(std::string const& destination) override
    {
        did(of("features.alternative", destination));
    }
    sfiResult BLFPickupRequest(sfiCallInfo* call, std::string& target) override
    {
        did(of("features.BLFPickup", *call, target));
        return world().answer;
    }
    void blfKeyPressedFPK(int keyNumber, bool transfer) override { did(of("features.blfKey", keyNumber, transfer)); }
    void setDNDStatusForBLF(std::string const& blfLedControlURI, bool dndOn) override
    {
        did(of("features.setDNDForBLF", blfLedControlURI, dndOn));
    }
    void sendURLPushRequest(std::string& url, std::string& data) override { did(of("features.push", url, data)); }
    EACockpitHandler* getEACockpitHandler() override
    {
        static FakeCockpit cockpit;
        return world().hasCockpit ? &cockpit : nullptr;
    }
};

class FakePickupHandler final : public DirectedPickupHandler
{
public:
    void setCommsSrv(SvcRTEContext* context, Executable* service) override
    {
        did(of("pickup.setCommsSrv", context != nullptr, service != nullptr));
    }
    void Initialise() override { did("pickup.Initialise()"); }
    void timerExpired(int timerId) override { did(of("pickup.timerExpired", timerId)); }
    sfiResult directedPickupRequest(sfiCallInfo* call, std::string& target) override
    {
        did(of("pickup.request", *call, target));
        return world().answer;
    }
};

class FakeFeatureToggle final : public FeatureToggle
{
public:
    void ftInitialise(PhysicalInterfaceServiceIfc* physicalInterface, LocalMgmtIfc* localMgmt,
                      MgmtAgentIfc* agent) override
    {
        did(of("toggle.ftInitialise", physicalInterface != nullptr, localMgmt != nullptr, agent != nullptr));
    }
    void ftToggleKeyPressed(int keyNumber) override { did(of("toggle.keyPressed", keyNumber)); }
};

class FakeRecording final : public MediaRecordingService
{
public:
    void init(Context& /*context*/, Executable* /*service*/, MgmtAgentIfc* /*agent*/,
              RecordingConfigManager* configuration) override
    {
        did("recording.init()");
        delete configuration;
    }
    void init(Context& /*context*/, Executable* /*service*/, MgmtAgentIfc* /*agent*/) override
    {
        did("recording.shortInit()");
    }
    bool activateRecording(std::string const& lineURI) override
    {
        did(of("recording.activate", lineURI));
        return world().yes;
    }
    bool deactivateRecording(std::string const& lineURI) override
    {
        did(of("recording.deactivate", lineURI));
        return world().yes;
    }
    void dataChangedEvent(ManageableData& /*data*/) override { did("recording.dataChanged()"); }
};
}  // namespace

LineManager* LineManager::Instance()
{
    static FakeLineManager instance;
    return &instance;
}

TeamServiceKeyset* TeamServiceKeyset::Instance()
{
    static FakeKeyset instance;
    return &instance;
}

TeamServiceFeatures* TeamServiceFeatures::Instance()
{
    static FakeTeamFeatures instance;
    return &instance;
}

DirectedPickupHandler* DirectedPickupHandler::Instance()
{
    static FakePickupHandler instance;
    return &instance;
}

FeatureToggle* FeatureToggle::Instance()
{
    static FakeFeatureToggle instance;
    return &instance;
}

MediaRecordingService* MediaRecordingService::GetInstance()
{
    static FakeRecording instance;
    return &instance;
}

void ClientUtils::splitMCADeviceIndex(std::string const& lineURI, std::string& baseURI, int& index)
{
    auto const mark = lineURI.find('#');
    baseURI = lineURI.substr(0, mark);
    if (mark != std::string::npos) {
        index = lineURI.back() - '0';
    }
}

bool Utility::isLineStateBusy(ELineState state)
{
    return state == eLineStateActive || state == eLineStateHold;
}

bool Utility::bridgeCall(Line* line)
{
    did(of("bridgeCall", line == nullptr ? std::string("none") : line->getLineData() == nullptr ? "bare" : "line"));
    return world().yes;
}

std::string Serializer::serialize(std::vector<int> const& values)
{
    return std::to_string(values.size());
}

std::string Serializer::serialize(std::vector<std::string> const& values)
{
    return std::to_string(values.size());
}

bool sfiGetServerBasedFeaturesEnabled()
{
    return world().serverFeatures;
}

int sfiGetServerType()
{
    return world().serverType;
}

int sfiGetCFPrivacyMode()
{
    return world().privacyMode;
}

void sfiGetCPUAddr(std::string& address)
{
    address = world().cpuAddress;
}

void sfiGetCurrentPhoneNumber(std::string& number)
{
    number = world().phoneNumber;
}

void sfiGetDirectedPickupUri(std::string& uri)
{
    uri = world().pickupURI;
}

void sfiGetVoiceMailDialURI(std::string& uri)
{
    uri = world().voiceMailURI;
}

void sfiGetRegistrationId(unsigned char /*registration*/, std::string& id)
{
    id = world().registrationId;
}

bool sfiBuiltInForwardingEnabled()
{
    return world().yes;
}

int sfiGetForwardNoReplyTime()
{
    return world().noReplyTime;
}

#define FORWARDING_READERS(rule, type)                                                                                 \
    int sfiGetForward##rule##Enable()                                                                                  \
    {                                                                                                                  \
        return world().forwardingOn[type];                                                                             \
    }                                                                                                                  \
    void sfiGetForward##rule##Uri(std::string& uri)                                                                    \
    {                                                                                                                  \
        uri = world().forwardingURI[type];                                                                             \
    }

FORWARDING_READERS(Unconditional, 0)
FORWARDING_READERS(UnconditionalExt, 1)
FORWARDING_READERS(UnconditionalInt, 2)
FORWARDING_READERS(Busy, 3)
FORWARDING_READERS(BusyExt, 4)
FORWARDING_READERS(BusyInt, 5)
FORWARDING_READERS(NoReply, 6)
FORWARDING_READERS(NoReplyExt, 7)
FORWARDING_READERS(NoReplyInt, 8)
#undef FORWARDING_READERS
