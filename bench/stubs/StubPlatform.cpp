#include "StubPlatform.h"

#include "platform/framework/Logging.h"
#include "platform/framework/Semaphore.h"
#include "platform/framework/Serializer.h"
#include "platform/lines/ClientUtils.h"
#include "platform/lines/Line.h"
#include "platform/lines/LineData.h"
#include "platform/lines/Utility.h"
#include "platform/management/SIPConfigManager.h"
#include "platform/recording/RecordingConfigManager.h"
#include "platform/sfi/SfiConfiguration.h"

namespace {

class StubSfi final : public CSfi
{
public:
    void Initialise(SvcRTEContext*) override {}
    void SetCommsService(Executable*) override {}
    sfiResult Activate() override { return sfiSuccess; }
    sfiResult Deactivate(bool, bool) override { return sfiSuccess; }
    void Startup() override {}
    sfiResult Subscribe(Executable*) override { return sfiSuccess; }
    sfiResult CallMake(sfiCallInfo*, std::string const&, int, int, bool, bool, bool, bool) override
    {
        return sfiSuccess;
    }
    sfiResult GroupPickup(sfiCallInfo*) override { return sfiSuccess; }
    sfiResult CallClear(sfiCallInfo*, CSTAEventCause) override { return sfiSuccess; }
    sfiResult CallRetrieve(sfiCallInfo*) override { return sfiSuccess; }
    sfiResult CallAccept(sfiCallInfo*) override { return sfiSuccess; }
    sfiResult CallAnswer(sfiCallInfo*) override { return sfiSuccess; }
    sfiResult CallRefuse(sfiCallInfo*, sfiRefuseCall) override { return sfiSuccess; }
    sfiResult CallFeature(sfiCallInfo*, sfiFeature, char const*, int) override { return sfiSuccess; }
    void SetManualHoldIndication(sfiCallInfo*, bool) override {}
    sfiResult GetManualHoldIndication(sfiCallInfo*) override { return sfiSuccess; }
    sfiResult SetServiceState(sfiServiceState) override { return sfiSuccess; }
    sfiResult GetServiceState(sfiServiceState&) override { return sfiSuccess; }
    sfiResult GenerateDigits(sfiCallInfo*, char const*) override { return sfiSuccess; }
    sfiResult InitializeOrFinalizeServerFeatures(std::string const&, bool) override { return sfiSuccess; }
    sfiResult SendCSTARequest(std::string const&, std::string const&) override { return sfiSuccess; }
    sfiResult ActivateCallbackRinging(sfiCallInfo*) override { return sfiSuccess; }
    sfiResult ActivateCallbackBusy(sfiCallInfo*) override { return sfiSuccess; }
    sfiResult CancelCallbacks(sfiCallInfo*, std::string&, sfiCancelCallBackType, bool) override { return sfiSuccess; }
    sfiResult SetMicrophoneMute(bool) override { return sfiSuccess; }
    sfiResult GetMicrophoneMute(bool&) override { return sfiSuccess; }
    sfiResult SetDoNotDisturb(int, bool) override { return sfiSuccess; }
    sfiResult GetDoNotDisturb(int, bool&) override { return sfiSuccess; }
    void GetDNDEnabled(bool&) override {}
    void GetAgentFeatureEnabled(bool&) override {}
    sfiResult SetAgentState(int, std::string const&) override { return sfiSuccess; }
    void SystemStatus(std::string const&, std::string const&, int) override {}
    bool IsPhoneLocked() override { return false; }
    void SendFeatureFailureNotification(int, int, int) override {}
    void SetHeadsetPlugged(bool) override {}
    void HandleKeyFunction(int) override {}
    void JackEvent() override {}
    void NotifyViewState(int) override {}
    void TimerExpired(int) override {}
    void SetPhysicalInterface(PhysicalInterfaceServiceIfc*) override {}
    void SetAuditoryDevice(AuditoryDeviceIfc*) override {}
    int ApplyManageableData(ManageableData&, bool) override { return 1; }
    int GetHotWarmLineStatus(int) override { return 0; }
    int GetLineHeadsetOverride() override { return 0; }
    sfiResult GetMessageWaitingIndicator(std::string const&, sfiMessageWaitingRecord&) override { return sfiSuccess; }
    void SetAssociatedCalls(bool) override {}
    void Lock() override {}
    void Unlock() override {}
    int StartTimer(int) override { return 1; }
    sfiResult SecurityChangeReinvite(sfiCallInfo*, bool) override { return sfiSuccess; }
    void Start() override {}
    void NotifyFPKAvailable() override {}
    sfiResult SendUACSTAServerMessage(std::string&) override { return sfiSuccess; }
    SfiMCAMapper* GetMCAMapper() override { return nullptr; }
    void GetBluetoothLineURI(int, std::string&, std::string&) override {}
    int GetDialRestrictionMode() override { return 0; }
    void setCFChangesPending(bool) override {}
};

class StubLineData final : public LineData
{
public:
    std::string getURI() override { return "4711"; }
    int getPrimary() override { return 1; }
    std::string getShortDescription() override { return {}; }
    int getRing() override { return 1; }
    int getRingDelay() override { return 0; }
    int getOverviewPosition() override { return 1; }
    bool getVisibleOnOverview() override { return true; }
    int getLineAudibleAlert() override { return 0; }
    std::string getHotWarmDigits() override { return {}; }
    int getHotWarmType() override { return kHotWarmNone; }
    int getSharedLineType() override { return kNotShared; }
    bool getDSSMonitorOnly() override { return false; }
    void setHotWarmLineManual(bool) override {}
};

class StubLine final : public Line
{
public:
    void keyPressed() override {}
    void dssKeyPressed(EDSSContext, std::string const&, std::string const&) override {}
    ELineState getLineState() override { return eLineStateIdle; }
    unsigned char getLineID() override { return 1; }
    sfiResult retrieve() override { return sfiSuccess; }
    LineData* getLineData() override { return &data_; }
    std::string getLastNotifyRemoteURI() override { return {}; }
    int getChildBCALineIdReservedForConsultationCall() override { return 0; }
    void getServerFeaturesSettings(serverFeaturesSettings&) override {}
    void setDNDConfiguration(bool) override {}
    void setForwardingConfiguration(sfiForwardingType, bool, std::string const&, int) override {}
    void setMissedCallIndicated(bool) override {}

private:
    StubLineData data_;
};

class StubLineManager final : public LineManager
{
public:
    void initialise() override {}
    bool isMCALine(std::string const&) override { return false; }
    Line* getLine(std::string const&) override { return &line_; }
    Line* getDSSLineForFPK(int) override { return nullptr; }
    Line* getLineForFPK(int) override { return &line_; }
    std::string getKeysetType() override { return "keyset"; }
    void getDeviceList(std::vector<std::string>&) override {}
    std::string getLocalHeldLine() override { return {}; }
    Line* getLineInState(ELineState, std::string const&) override { return nullptr; }
    bool isLocallyIdleLine() override { return true; }
    bool observe(Executable*) override { return true; }
    void requestOverviewData(std::string const&) override {}
    void setPhysicalInterface(PhysicalInterfaceServiceIfc*) override {}
    void setDigitAnalysisService(DigitAnalysisServiceIfc*) override {}
    int getFPKforUri(std::string const&) override { return 1; }
    std::string getURIforFPK(int) override { return "4711"; }
    bool lineConsideredAsPrivate(std::string const&) override { return false; }

private:
    StubLine line_;
};

bool logIsOn = false;

}  // namespace

namespace stub_platform {

CSfi& sfi()
{
    static StubSfi instance;
    return instance;
}

LineManager& lines()
{
    static StubLineManager instance;
    return instance;
}

void switchLog(bool on)
{
    logIsOn = on;
}

}  // namespace stub_platform

CSfi* CSfi::GetInstance()
{
    return &stub_platform::sfi();
}

LineManager* LineManager::Instance()
{
    return &stub_platform::lines();
}

bool loggingOnAppUni(char const* /*component*/, int /*level*/)
{
    return logIsOn;
}

void logAppUni(char const* /*component*/, char const* /*source*/, int /*level*/, int /*line*/, char const* /*format*/,
               ...)
{}

void ClientUtils::splitMCADeviceIndex(std::string const& lineURI, std::string& baseURI, int& /*index*/)
{
    baseURI = lineURI;
}

bool Utility::isLineStateBusy(ELineState /*state*/)
{
    return false;
}

bool Utility::bridgeCall(Line* /*line*/)
{
    return false;
}

std::string Serializer::serialize(std::vector<int> const& /*values*/)
{
    return {};
}

std::string Serializer::serialize(std::vector<std::string> const& /*values*/)
{
    return {};
}

class Semaphore::State
{};

Semaphore::Semaphore(int /*initial*/, int /*maximum*/, bool /*inheritPriority*/) {}
Semaphore::~Semaphore() = default;

bool Semaphore::take(int /*timeoutMilliseconds*/)
{
    return true;
}

void Semaphore::give() {}

class SIPConfigManager::State
{};

SIPConfigManager::SIPConfigManager(SvcRTEContext* /*context*/, MgmtAgentIfc* /*agent*/) {}
SIPConfigManager::~SIPConfigManager() = default;
void SIPConfigManager::initialise(bool /*apply*/) {}
void SIPConfigManager::switchOnLampsForForwarding() {}
void SIPConfigManager::checkDhcpProxyAddr() {}
int SIPConfigManager::getData(ManageableData& /*data*/)
{
    return 0;
}
void SIPConfigManager::resetUserData() {}

class RecordingConfigManager::State
{};

RecordingConfigManager::RecordingConfigManager(SvcRTEContext* /*context*/) {}
RecordingConfigManager::~RecordingConfigManager() = default;

// The SIP configuration, empty.
#define NOTHING_CONFIGURED(reader)                                                                                     \
    int reader()                                                                                                       \
    {                                                                                                                  \
        return 0;                                                                                                      \
    }
#define NO_TEXT_CONFIGURED(reader)                                                                                     \
    void reader(std::string& text)                                                                                     \
    {                                                                                                                  \
        text.clear();                                                                                                  \
    }

NOTHING_CONFIGURED(sfiGetServerType)
NOTHING_CONFIGURED(sfiGetCFPrivacyMode)
NOTHING_CONFIGURED(sfiGetForwardUnconditionalEnable)
NOTHING_CONFIGURED(sfiGetForwardUnconditionalExtEnable)
NOTHING_CONFIGURED(sfiGetForwardUnconditionalIntEnable)
NOTHING_CONFIGURED(sfiGetForwardBusyEnable)
NOTHING_CONFIGURED(sfiGetForwardBusyExtEnable)
NOTHING_CONFIGURED(sfiGetForwardBusyIntEnable)
NOTHING_CONFIGURED(sfiGetForwardNoReplyEnable)
NOTHING_CONFIGURED(sfiGetForwardNoReplyExtEnable)
NOTHING_CONFIGURED(sfiGetForwardNoReplyIntEnable)
NOTHING_CONFIGURED(sfiGetForwardNoReplyTime)
NO_TEXT_CONFIGURED(sfiGetCPUAddr)
NO_TEXT_CONFIGURED(sfiGetCurrentPhoneNumber)
NO_TEXT_CONFIGURED(sfiGetDirectedPickupUri)
NO_TEXT_CONFIGURED(sfiGetVoiceMailDialURI)
NO_TEXT_CONFIGURED(sfiGetForwardUnconditionalUri)
NO_TEXT_CONFIGURED(sfiGetForwardUnconditionalExtUri)
NO_TEXT_CONFIGURED(sfiGetForwardUnconditionalIntUri)
NO_TEXT_CONFIGURED(sfiGetForwardBusyUri)
NO_TEXT_CONFIGURED(sfiGetForwardBusyExtUri)
NO_TEXT_CONFIGURED(sfiGetForwardBusyIntUri)
NO_TEXT_CONFIGURED(sfiGetForwardNoReplyUri)
NO_TEXT_CONFIGURED(sfiGetForwardNoReplyExtUri)
NO_TEXT_CONFIGURED(sfiGetForwardNoReplyIntUri)

bool sfiGetServerBasedFeaturesEnabled()
{
    return false;
}

bool sfiBuiltInForwardingEnabled()
{
    return true;
}

void sfiGetRegistrationId(unsigned char /*registration*/, std::string& id)
{
    id.clear();
}
