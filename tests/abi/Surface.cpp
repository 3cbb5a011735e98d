// Includes every public header for the record of operations: the debug information of this file describes each class of
// include/ and platform/ in full.
#include "CommunicationsServiceEventIfc.h"
#include "CommunicationsServiceIfc.h"
#include "MediaRecordingServiceIfc.h"
#include "ParamaterExtractor.h"
#include "TeamServiceIfc.h"
#include "platform/framework/Invoker.h"
#include "platform/framework/InvokerResponse.h"
#include "platform/framework/Proxy.h"
#include "platform/framework/ProxyRequest.h"
#include "platform/framework/Service.h"
#include "platform/framework/SvcRTEContext.h"
#include "platform/lines/Line.h"
#include "platform/lines/LineData.h"
#include "platform/lines/LineManager.h"
#include "platform/management/LocalMgmtIfc.h"
#include "platform/management/MgmtAgentIfc.h"
#include "platform/management/SIPConfigManager.h"
#include "platform/physical/AuditoryDeviceIfc.h"
#include "platform/physical/PhysicalInterfaceServiceIfc.h"
#include "platform/physical/functionalEventObserver.h"
#include "platform/physical/physicalEventObserver.h"
#include "platform/recording/MediaRecordingService.h"
#include "platform/recording/RecordingConfigManager.h"
#include "platform/services/CertificateMgmtSvcIfc.h"
#include "platform/services/DigitAnalysisServiceIfc.h"
#include "platform/sfi/CSfi.h"
#include "platform/sfi/SfiMCAMapper.h"
#include "platform/team/DirectedPickupHandler.h"
#include "platform/team/EACockpitHandler.h"
#include "platform/team/FeatureToggle.h"
#include "platform/team/TeamServiceFeatures.h"
#include "platform/team/TeamServiceKeyset.h"

// One variable for each class, so that a new class is a new variable and no change.
namespace surface {

CommunicationsServiceEventIfc* communicationsServiceEventIfc;
CommunicationsServiceIfc* communicationsServiceIfc;
MediaRecordingServiceIfc* mediaRecordingServiceIfc;
ParamaterExtractor* paramaterExtractor;
TeamServiceIfc* teamServiceIfc;
Service* service;
Proxy* proxy;
Invoker* invoker;
InvokerResponse* invokerResponse;
ProxyRequest* proxyRequest;
SvcRTEContext* svcRTEContext;
Line* line;
LineData* lineData;
LineManager* lineManager;
LocalMgmtIfc* localMgmtIfc;
MgmtAgentIfc* mgmtAgentIfc;
SIPConfigManager* sipConfigManager;
AuditoryDeviceIfc* auditoryDeviceIfc;
PhysicalInterfaceServiceIfc* physicalInterfaceServiceIfc;
functionalEventObserver* theFunctionalEventObserver;
physicalEventObserver* thePhysicalEventObserver;
MediaRecordingService* mediaRecordingService;
RecordingConfigManager* recordingConfigManager;
CertificateMgmtSvcIfc* certificateMgmtSvcIfc;
DigitAnalysisServiceIfc* digitAnalysisServiceIfc;
CSfi* callControl;
SfiMCAMapper* sfiMCAMapper;
DirectedPickupHandler* directedPickupHandler;
EACockpitHandler* eaCockpitHandler;
FeatureToggle* featureToggle;
TeamServiceFeatures* teamServiceFeatures;
TeamServiceKeyset* teamServiceKeyset;

}  // namespace surface
