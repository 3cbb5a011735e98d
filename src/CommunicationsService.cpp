// Life of the service object: creation, wiring, timers, end.
#include "CommunicationsService.h"

#include "CommunicationsServiceGuards.h"
#include "CommunicationsServiceLog.h"
#include "platform/lines/LineManager.h"
#include "platform/management/LocalMgmtIfc.h"
#include "platform/management/QoraTags.h"
#include "platform/physical/AuditoryDeviceIfc.h"
#include "platform/physical/PhysicalInterfaceServiceIfc.h"
#include "platform/recording/MediaRecordingService.h"
#include "platform/recording/RecordingConfigManager.h"
#include "platform/services/CertificateMgmtSvcIfc.h"
#include "platform/services/DigitAnalysisServiceIfc.h"
#include "platform/sfi/CSfi.h"
#include "platform/team/DirectedPickupHandler.h"
#include "platform/team/FeatureToggle.h"
#include "platform/team/TeamServiceFeatures.h"
#include "platform/team/TeamServiceKeyset.h"

namespace {

constexpr int kSubscriptionDelay = 1000;

template <class Interface>
Interface* find(CommunicationsService& service, char const* name)
{
    return dynamic_cast<Interface*>(service.findIfc(name));
}

}  // namespace

extern "C" __attribute__((visibility("default"))) CommunicationsService* createCommunicationsService()
{
    return new CommunicationsService;
}

CommunicationsService::CommunicationsService()
    : publicationLock_(1, 1, false)
    , teamServiceLock_(1, 1, true)
{}

CommunicationsService::~CommunicationsService()
{
    // It must end while the locks still exist.
    sipConfigManager_.reset();
}

Executable* CommunicationsService::findIfc(std::string const& name)
{
    Executable* const found = context_->findExecutable(name);
    if (found == nullptr) {
        SERVICE_FAILURE("find \"%s\" failed", name.c_str());
    }
    return found;
}

void CommunicationsService::init(Context& context)
{
    SERVICE_TRACE("init start");
    context_ = &context;
    startRecording();
    if (sipConfigManager_ == nullptr) {
        sipConfigManager_ = std::make_unique<SIPConfigManager>(context_, this);
    }
    auditoryDevice_ = find<AuditoryDeviceIfc>(*this, "AuditoryDeviceIfc");
    physicalInterface_ = find<PhysicalInterfaceServiceIfc>(*this, "PhysicalInterfaceServiceIfc");
    DirectedPickupHandler::Instance()->setCommsSrv(context_, this);
    DirectedPickupHandler::Instance()->Initialise();
    LineManager::Instance()->setPhysicalInterface(physicalInterface_);
    bool const hasCallControl = CSfi::GetInstance() != nullptr;
    if (hasCallControl) {
        startCallControl();
    } else {
        SERVICE_FAILURE("Failed to find Sfi");
    }
    startKeyset();
    startTeamFeatures();
    digitAnalysis_ = find<DigitAnalysisServiceIfc>(*this, "DigitAnalysisServiceIfc");
    LineManager::Instance()->setDigitAnalysisService(digitAnalysis_);
    FeatureToggle::Instance()->ftInitialise(physicalInterface_, localMgmt_, this);
    if (hasCallControl) {
        subscriptionTimerId_ = CSfi::GetInstance()->StartTimer(kSubscriptionDelay);
        CSfi::GetInstance()->Start();
    }
    SERVICE_TRACE("init end");
}

void CommunicationsService::startRecording()
{
    auto configuration = std::make_unique<RecordingConfigManager>(context_);
    mediaRecordingService_ = MediaRecordingService::GetInstance();
    mediaRecordingService_->init(*context_, this, this, configuration.release());
}

void CommunicationsService::startCallControl()
{
    CSfi::GetInstance()->SetPhysicalInterface(physicalInterface_);
    sipConfigManager_->initialise(true);
    CSfi::GetInstance()->Initialise(context_);
    CSfi::GetInstance()->SetCommsService(this);
    CSfi::GetInstance()->SetAuditoryDevice(auditoryDevice_);
    CSfi::GetInstance()->Startup();
}

void CommunicationsService::startKeyset()
{
    LineManager::Instance()->initialise();
    TeamServiceKeyset::Instance()->setCommsSrv(context_, this);
    TeamServiceKeyset::Instance()->init();
}

void CommunicationsService::startTeamFeatures()
{
    localMgmt_ = find<LocalMgmtIfc>(*this, "LocalMgmtIfc");
    certificateMgmt_ = find<CertificateMgmtSvcIfc>(*this, "CertificateMgmtSvcIfc");
    TeamServiceFeatures::Instance()->setLocalMgmtInterface(localMgmt_);
    TeamServiceFeatures::Instance()->setCertMgmtInterface(certificateMgmt_);
    TeamServiceFeatures::Instance()->setPhysicalInterface(physicalInterface_);
    TeamServiceFeatures::Instance()->setCommsSrv(context_, this);
}

sfiResult CommunicationsService::activate()
{
    SERVICE_TRACE("activate");
    SfiGuard const hold;
    return CSfi::GetInstance()->Activate();
}

sfiResult CommunicationsService::deactivate(bool allowAutoActivate)
{
    SERVICE_TRACE("deactivate");
    SfiGuard const hold;
    return CSfi::GetInstance()->Deactivate(false, allowAutoActivate);
}

void CommunicationsService::shutdown()
{
    SERVICE_TRACE("shutdown BEGIN.");
    CSfi::GetInstance()->Deactivate(true, true);
    SERVICE_TRACE("shutdown END.");
}

sfiResult CommunicationsService::subscribe(Executable* subscriber)
{
    SERVICE_TRACE("subscribe start");
    sfiResult const result = CSfi::GetInstance()->Subscribe(subscriber);
    SERVICE_TRACE("subscribe end");
    return result;
}

bool CommunicationsService::observe(Executable* observer)
{
    return LineManager::Instance()->observe(observer);
}

void CommunicationsService::run() {}

void CommunicationsService::timerEvent(int timerId)
{
    SERVICE_TRACE("timerEvent(timerId = %d)", timerId);
    if (timerId == subscriptionTimerId_) {
        subscriptionTimerExpired();
    }
    CSfi::GetInstance()->TimerExpired(timerId);
    TeamServiceKeyset::Instance()->timerExpired(timerId);
    DirectedPickupHandler::Instance()->timerExpired(timerId);
    TeamServiceFeatures::Instance()->timerExpired(timerId);
}

void CommunicationsService::subscriptionTimerExpired()
{
    SERVICE_TRACE("timerEvent: Comms subscription timer");
    subscribePhysicalInterfaceEvents();
    if (localMgmt_ != nullptr) {
        localMgmt_->registerForTag(this, QoraTags::INTERFACE_STATUS);
        localMgmt_->registerForTag(this, QoraTags::WLAN_LINK_STATUS);
    }
    if (physicalInterface_ != nullptr) {
        bool const plugged = physicalInterface_->getHeadsetJackStatus() == PhysDefs::plugIn;
        CSfi::GetInstance()->SetHeadsetPlugged(plugged);
    }
    TeamServiceFeatures::Instance()->Activate();
    if (sipConfigManager_ != nullptr) {
        sipConfigManager_->switchOnLampsForForwarding();
        sipConfigManager_->checkDhcpProxyAddr();
    }
    // Cleared last: once the id is 0 again, all of this is done.
    subscriptionTimerId_ = 0;
}

std::string CommunicationsService::csCommunicationsService(char const* /*unused*/)
{
    return {};
}

void CommunicationsService::processSignallingComponentEvent(char const* /*payload*/, int /*count*/) {}

Executable* CommunicationsService::getSubscribingService()
{
    return this;
}
