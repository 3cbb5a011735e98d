// Team features, pick-up and recording that do nothing.
#include "platform/recording/MediaRecordingService.h"
#include "platform/team/DirectedPickupHandler.h"
#include "platform/team/FeatureToggle.h"
#include "platform/team/TeamServiceFeatures.h"
#include "platform/team/TeamServiceKeyset.h"

namespace {

class StubDirectedPickupHandler final : public DirectedPickupHandler
{
public:
    void setCommsSrv(SvcRTEContext*, Executable*) override {}
    void Initialise() override {}
    void timerExpired(int) override {}
    sfiResult directedPickupRequest(sfiCallInfo*, std::string&) override { return sfiSuccess; }
};

class StubFeatureToggle final : public FeatureToggle
{
public:
    void ftInitialise(PhysicalInterfaceServiceIfc*, LocalMgmtIfc*, MgmtAgentIfc*) override {}
    void ftToggleKeyPressed(int) override {}
};

class StubMediaRecordingService final : public MediaRecordingService
{
public:
    void init(Context&, Executable*, MgmtAgentIfc*, RecordingConfigManager*) override {}
    void init(Context&, Executable*, MgmtAgentIfc*) override {}
    bool activateRecording(std::string const&) override { return false; }
    bool deactivateRecording(std::string const&) override { return false; }
    void dataChangedEvent(ManageableData&) override {}
};

class StubTeamServiceKeyset final : public TeamServiceKeyset
{
public:
    bool isKeysetActive() override { return false; }
    void setCommsSrv(SvcRTEContext*, Executable*) override {}
    void init() override {}
    void timerExpired(int) override {}
    sfiResult answerCall(std::string const&) override { return sfiSuccess; }
    void makeCall(std::string const&) override {}
    sfiResult retrieveCall(std::string const&, int) override { return sfiSuccess; }
    void callStateChanged(std::string const&, sfiCallState, int, int) override {}
    void callIgnored(std::string const&) override {}
    void callIsolation(std::string const&, bool) override {}
    bool changeMultiUser(std::string const&) override { return false; }
    std::string getCurrentMultiUser() override { return {}; }
    bool getImmediateRing() override { return false; }
    void setImmediateRing(bool, std::string&) override {}
    int getIncomingCallPriority(std::string const&) override { return 0; }
    void handleButtonPressedEvent(PhysDefs::keyFunctionType) override {}
    void initiateBCAOutgoingCall(std::string const&, std::string const&) override {}
    bool isSpoofedDummyLine(std::string const&) override { return false; }
    bool dummyLine_reserve() override { return false; }
    bool reserveNextSCA(std::string const&) override { return false; }
    bool unreserveLine(std::string const&) override { return false; }
    void setIsInServiceInitiatedState(std::string const&, bool) override {}
    void terminatePreview() override {}
};

class StubTeamServiceFeatures final : public TeamServiceFeatures
{
public:
    void setPhysicalInterface(PhysicalInterfaceServiceIfc*) override {}
    void setLocalMgmtInterface(LocalMgmtIfc*) override {}
    void processInvokeDOAction(int, int, bool, std::string const&) override {}
    void processInvokeDVAction(ZEBLocalFeaturesDefs::LF_NOTIFICATION_ID, int, int,
                               ZEBLocalFeaturesDefs::eActionType) override
    {}
    void callbackDOFeatureCallID(std::string const&, int) override {}
    void setCommsSrv(SvcRTEContext*, Executable*) override {}
    void setCertMgmtInterface(CertificateMgmtSvcIfc*) override {}
    void Activate() override {}
    void timerExpired(int) override {}
    void HandleButtonPressedEvent(int, PhysDefs::keyFunctionType, PhysDefs::actionType) override {}
    void HandleForwardingAlternative(std::string const&) override {}
    sfiResult BLFPickupRequest(sfiCallInfo*, std::string&) override { return sfiSuccess; }
    void blfKeyPressedFPK(int, bool) override {}
    void setDNDStatusForBLF(std::string const&, bool) override {}
    void sendURLPushRequest(std::string&, std::string&) override {}
    EACockpitHandler* getEACockpitHandler() override { return nullptr; }
};

template <typename Stub>
Stub* onlyOne()
{
    static Stub instance;
    return &instance;
}

}  // namespace

DirectedPickupHandler* DirectedPickupHandler::Instance()
{
    return onlyOne<StubDirectedPickupHandler>();
}

FeatureToggle* FeatureToggle::Instance()
{
    return onlyOne<StubFeatureToggle>();
}

MediaRecordingService* MediaRecordingService::GetInstance()
{
    return onlyOne<StubMediaRecordingService>();
}

TeamServiceKeyset* TeamServiceKeyset::Instance()
{
    return onlyOne<StubTeamServiceKeyset>();
}

TeamServiceFeatures* TeamServiceFeatures::Instance()
{
    return onlyOne<StubTeamServiceFeatures>();
}
