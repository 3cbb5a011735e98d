// The order of the operations of each interface that other programs were compiled against. Each list is compared with
// the virtual tables that the compiler generates from the headers.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "CommunicationsServiceEventIfc.h"
#include "CommunicationsServiceIfc.h"
#include "MediaRecordingServiceIfc.h"
#include "Slot.h"
#include "TeamServiceIfc.h"
#include "platform/framework/InvokerResponse.h"
#include "platform/lines/Line.h"
#include "platform/lines/LineManager.h"
#include "platform/management/MgmtAgentIfc.h"
#include "platform/physical/functionalEventObserver.h"
#include "platform/physical/physicalEventObserver.h"
#include "platform/sfi/CSfi.h"
#include "platform/team/TeamServiceFeatures.h"
#include "platform/team/TeamServiceKeyset.h"
#include "src/CommunicationsServiceEventProxy.h"
#include "src/CommunicationsServiceInvoker.h"

namespace {

struct Operation
{
    std::string name;
    std::size_t slot;
};

#define OPERATION(Class, name)                                                                                         \
    Operation                                                                                                          \
    {                                                                                                                  \
        #name, slotOf(&Class::name)                                                                                    \
    }

// A virtual destructor takes the first two slots: complete and deleting.
constexpr std::size_t kAfterDestructors = 2;

void expectOrder(std::size_t first, std::vector<Operation> const& operations)
{
    for (std::size_t i = 0; i < operations.size(); ++i) {
        EXPECT_EQ(operations[i].slot, first + i) << operations[i].name;
    }
}

template <class Interface>
void expectWholeOrder(std::size_t first, std::vector<Operation> const& operations)
{
    expectOrder(first, operations);
    EXPECT_EQ(slotCountOf<Interface>(), first + operations.size()) << "operations were added or removed";
}

TEST(OrderTest, CommunicationsServiceIfc)
{
    using Ifc = CommunicationsServiceIfc;
    expectWholeOrder<Ifc>(0, {
                                 OPERATION(Ifc, processSignallingComponentEvent),
                                 OPERATION(Ifc, activate),
                                 OPERATION(Ifc, deactivate),
                                 OPERATION(Ifc, callClear),
                                 OPERATION(Ifc, outgoingCallMake),
                                 OPERATION(Ifc, acceptCall),
                                 OPERATION(Ifc, answerCall),
                                 OPERATION(Ifc, deflectCall),
                                 OPERATION(Ifc, holdCall),
                                 OPERATION(Ifc, retrieveCall),
                                 OPERATION(Ifc, attendedTransferCall),
                                 OPERATION(Ifc, blindTransferCall),
                                 OPERATION(Ifc, SendCSTARequest),
                                 OPERATION(Ifc, sendUACSTAServerMessage),
                                 OPERATION(Ifc, InitializeOrFinalizeServerFeatures),
                                 OPERATION(Ifc, activateCallbackRinging),
                                 OPERATION(Ifc, activateCallbackBusy),
                                 OPERATION(Ifc, cancelCallbacks),
                                 OPERATION(Ifc, consultationCall),
                                 OPERATION(Ifc, refuseCall),
                                 OPERATION(Ifc, subscribe),
                                 OPERATION(Ifc, directedPickupCall),
                                 OPERATION(Ifc, groupPickupCall),
                                 OPERATION(Ifc, setServiceState),
                                 OPERATION(Ifc, getServiceState),
                                 OPERATION(Ifc, setDoNotDisturb),
                                 OPERATION(Ifc, getDoNotDisturb),
                                 OPERATION(Ifc, setAgentState),
                                 OPERATION(Ifc, setMicrophoneMute),
                                 OPERATION(Ifc, getMicrophoneMute),
                                 OPERATION(Ifc, systemStatus),
                                 OPERATION(Ifc, generateDigits),
                                 OPERATION(Ifc, getDevices),
                                 OPERATION(Ifc, conferenceCall),
                                 OPERATION(Ifc, getManualHoldIndication),
                                 OPERATION(Ifc, alternateCalls),
                                 OPERATION(Ifc, getMessageWaitingIndicator),
                                 OPERATION(Ifc, setAssociatedCalls),
                                 OPERATION(Ifc, setLampMode),
                                 OPERATION(Ifc, makeSecurityChangeReinvite),
                                 OPERATION(Ifc, setIsInServiceInitiatedState),
                                 OPERATION(Ifc, setForwardingConfiguration),
                                 OPERATION(Ifc, getForwardingConfiguration),
                                 OPERATION(Ifc, callbackDOFeatureCallID),
                                 OPERATION(Ifc, csCommunicationsService),
                                 OPERATION(Ifc, activateStoredFwd),
                             });
}

TEST(OrderTest, TeamServiceIfc)
{
    using Ifc = TeamServiceIfc;
    expectWholeOrder<Ifc>(0, {
                                 OPERATION(Ifc, lineKeyPressedFPK),
                                 OPERATION(Ifc, lineKeyPressed),
                                 OPERATION(Ifc, dssKeyPressedFPK),
                                 OPERATION(Ifc, dssKeyPressed),
                                 OPERATION(Ifc, blfKeyPressedFPK),
                                 OPERATION(Ifc, setDNDStatusForBLF),
                                 OPERATION(Ifc, getLineRingDelay),
                                 OPERATION(Ifc, getShortDescription),
                                 OPERATION(Ifc, getPrimary),
                                 OPERATION(Ifc, getVisibleOnOverview),
                                 OPERATION(Ifc, getOverviewPosition),
                                 OPERATION(Ifc, getState),
                                 OPERATION(Ifc, getRemoteURI),
                                 OPERATION(Ifc, isKeyset),
                                 OPERATION(Ifc, observe),
                                 OPERATION(Ifc, reserveLine),
                                 OPERATION(Ifc, unreserveLine),
                                 OPERATION(Ifc, reserveNextSCA),
                                 OPERATION(Ifc, getWarmLine),
                                 OPERATION(Ifc, getLineRing),
                                 OPERATION(Ifc, requestOverviewData),
                                 OPERATION(Ifc, ftToggleKeyPressed),
                                 OPERATION(Ifc, getImmediateRing),
                                 OPERATION(Ifc, setImmediateRing),
                                 OPERATION(Ifc, getURIforFPK),
                                 OPERATION(Ifc, getFPKforUri),
                                 OPERATION(Ifc, callIgnored),
                                 OPERATION(Ifc, callIsolation),
                                 OPERATION(Ifc, getLineHeadsetOverride),
                                 OPERATION(Ifc, bridgeCall),
                                 OPERATION(Ifc, pushRequest),
                                 OPERATION(Ifc, retrieveRemotelyHeldCall),
                                 OPERATION(Ifc, getIncomingCallPriority),
                                 OPERATION(Ifc, terminatePreview),
                                 OPERATION(Ifc, getHotWarmLineStatus),
                                 OPERATION(Ifc, getHotWarmLineDialInfo),
                                 OPERATION(Ifc, isLocallyIdleLine),
                                 OPERATION(Ifc, getEACockpitData),
                                 OPERATION(Ifc, setEACockpitData),
                                 OPERATION(Ifc, lineConsideredAsPrivate),
                                 OPERATION(Ifc, getLineAudibleAlert),
                                 OPERATION(Ifc, setMissedCallIndication),
                                 OPERATION(Ifc, changeMultiUser),
                                 OPERATION(Ifc, processInvokeDOAction),
                                 OPERATION(Ifc, processInvokeDVAction),
                                 OPERATION(Ifc, initiateBCAOutgoingCall),
                             });
}

TEST(OrderTest, MediaRecordingServiceIfc)
{
    using Ifc = MediaRecordingServiceIfc;
    expectWholeOrder<Ifc>(0, {OPERATION(Ifc, activateRecording), OPERATION(Ifc, deactivateRecording)});
}

TEST(OrderTest, MgmtAgentIfc)
{
    using Ifc = MgmtAgentIfc;
    expectWholeOrder<Ifc>(kAfterDestructors, {
                                                 OPERATION(Ifc, setData),
                                                 OPERATION(Ifc, getData),
                                                 OPERATION(Ifc, manageableDataChanged),
                                                 OPERATION(Ifc, resetUserData),
                                             });
}

TEST(OrderTest, PhysicalEventObserver)
{
    using Ifc = physicalEventObserver;
    expectWholeOrder<Ifc>(0, {
                                 OPERATION(Ifc, buttonPressedEvent),
                                 OPERATION(Ifc, hookswitchEvent),
                                 OPERATION(Ifc, jackEvent),
                                 OPERATION(Ifc, hotplugEvent),
                                 OPERATION(Ifc, lampEvent),
                                 OPERATION(Ifc, sliderEvent),
                                 OPERATION(Ifc, clickwheelEvent),
                                 OPERATION(Ifc, physicalInactivityTimerExpired),
                                 OPERATION(Ifc, fpkAvailableEvent),
                                 OPERATION(Ifc, shiftChangeEvent),
                                 OPERATION(Ifc, activityDetected),
                                 OPERATION(Ifc, getDestinationChannelName),
                                 OPERATION(Ifc, getSubscribingService),
                                 OPERATION(Ifc, shiftChangeEventForCertainFPKey),
                             });
}

TEST(OrderTest, FunctionalEventObserver)
{
    using Ifc = functionalEventObserver;
    expectWholeOrder<Ifc>(0, {
                                 OPERATION(Ifc, functionPressedEvent),
                                 OPERATION(Ifc, getDestinationChannelName),
                                 OPERATION(Ifc, getSubscribingService),
                             });
}

TEST(OrderTest, CSfi)
{
    expectWholeOrder<CSfi>(0, {
                                  OPERATION(CSfi, Initialise),
                                  OPERATION(CSfi, SetCommsService),
                                  OPERATION(CSfi, Activate),
                                  OPERATION(CSfi, Deactivate),
                                  OPERATION(CSfi, Startup),
                                  OPERATION(CSfi, Subscribe),
                                  OPERATION(CSfi, CallMake),
                                  OPERATION(CSfi, GroupPickup),
                                  OPERATION(CSfi, CallClear),
                                  OPERATION(CSfi, CallRetrieve),
                                  OPERATION(CSfi, CallAccept),
                                  OPERATION(CSfi, CallAnswer),
                                  OPERATION(CSfi, CallRefuse),
                                  OPERATION(CSfi, CallFeature),
                                  OPERATION(CSfi, SetManualHoldIndication),
                                  OPERATION(CSfi, GetManualHoldIndication),
                                  OPERATION(CSfi, SetServiceState),
                                  OPERATION(CSfi, GetServiceState),
                                  OPERATION(CSfi, GenerateDigits),
                                  OPERATION(CSfi, InitializeOrFinalizeServerFeatures),
                                  OPERATION(CSfi, SendCSTARequest),
                                  OPERATION(CSfi, ActivateCallbackRinging),
                                  OPERATION(CSfi, ActivateCallbackBusy),
                                  OPERATION(CSfi, CancelCallbacks),
                                  OPERATION(CSfi, SetMicrophoneMute),
                                  OPERATION(CSfi, GetMicrophoneMute),
                                  OPERATION(CSfi, SetDoNotDisturb),
                                  OPERATION(CSfi, GetDoNotDisturb),
                                  OPERATION(CSfi, GetDNDEnabled),
                                  OPERATION(CSfi, GetAgentFeatureEnabled),
                                  OPERATION(CSfi, SetAgentState),
                                  OPERATION(CSfi, SystemStatus),
                                  OPERATION(CSfi, IsPhoneLocked),
                                  OPERATION(CSfi, SendFeatureFailureNotification),
                                  OPERATION(CSfi, SetHeadsetPlugged),
                                  OPERATION(CSfi, HandleKeyFunction),
                                  OPERATION(CSfi, JackEvent),
                                  OPERATION(CSfi, NotifyViewState),
                                  OPERATION(CSfi, TimerExpired),
                                  OPERATION(CSfi, SetPhysicalInterface),
                                  OPERATION(CSfi, SetAuditoryDevice),
                                  OPERATION(CSfi, ApplyManageableData),
                                  OPERATION(CSfi, GetHotWarmLineStatus),
                                  OPERATION(CSfi, GetLineHeadsetOverride),
                                  OPERATION(CSfi, GetMessageWaitingIndicator),
                                  OPERATION(CSfi, SetAssociatedCalls),
                                  OPERATION(CSfi, Lock),
                                  OPERATION(CSfi, Unlock),
                                  OPERATION(CSfi, StartTimer),
                                  OPERATION(CSfi, SecurityChangeReinvite),
                                  OPERATION(CSfi, Start),
                                  OPERATION(CSfi, NotifyFPKAvailable),
                                  OPERATION(CSfi, SendUACSTAServerMessage),
                                  OPERATION(CSfi, GetMCAMapper),
                                  OPERATION(CSfi, GetBluetoothLineURI),
                                  OPERATION(CSfi, GetDialRestrictionMode),
                                  OPERATION(CSfi, setCFChangesPending),
                              });
}

TEST(OrderTest, LineManager)
{
    expectWholeOrder<LineManager>(0, {
                                         OPERATION(LineManager, initialise),
                                         OPERATION(LineManager, isMCALine),
                                         OPERATION(LineManager, getLine),
                                         OPERATION(LineManager, getDSSLineForFPK),
                                         OPERATION(LineManager, getLineForFPK),
                                         OPERATION(LineManager, getKeysetType),
                                         OPERATION(LineManager, getDeviceList),
                                         OPERATION(LineManager, getLocalHeldLine),
                                         OPERATION(LineManager, getLineInState),
                                         OPERATION(LineManager, isLocallyIdleLine),
                                         OPERATION(LineManager, observe),
                                         OPERATION(LineManager, requestOverviewData),
                                         OPERATION(LineManager, setPhysicalInterface),
                                         OPERATION(LineManager, setDigitAnalysisService),
                                         OPERATION(LineManager, getFPKforUri),
                                         OPERATION(LineManager, getURIforFPK),
                                         OPERATION(LineManager, lineConsideredAsPrivate),
                                     });
}

// In the following interfaces the first operations are fixed; others may follow.
TEST(OrderTest, Line)
{
    expectOrder(0, {
                       OPERATION(Line, keyPressed),
                       OPERATION(Line, dssKeyPressed),
                       OPERATION(Line, getLineState),
                       OPERATION(Line, getLineID),
                       OPERATION(Line, retrieve),
                   });
}

TEST(OrderTest, TeamServiceFeatures)
{
    expectOrder(0, {
                       OPERATION(TeamServiceFeatures, setPhysicalInterface),
                       OPERATION(TeamServiceFeatures, setLocalMgmtInterface),
                       OPERATION(TeamServiceFeatures, processInvokeDOAction),
                       OPERATION(TeamServiceFeatures, processInvokeDVAction),
                       OPERATION(TeamServiceFeatures, callbackDOFeatureCallID),
                   });
}

TEST(OrderTest, TeamServiceKeyset)
{
    expectOrder(0, {OPERATION(TeamServiceKeyset, isKeysetActive)});
}

TEST(OrderTest, InvokerResponse)
{
    expectOrder(kAfterDestructors, {
                                       OPERATION(InvokerResponse, finish),
                                       OPERATION(InvokerResponse, sendResponse),
                                       OPERATION(InvokerResponse, channelName),
                                   });
}

TEST(OrderTest, CommunicationsServiceEventIfc)
{
    using Ifc = CommunicationsServiceEventIfc;
    expectWholeOrder<Ifc>(0, {
                                 OPERATION(Ifc, callStateChange),
                                 OPERATION(Ifc, registrationStateChange),
                                 OPERATION(Ifc, incomingCall),
                                 OPERATION(Ifc, incomingPickupCall),
                                 OPERATION(Ifc, callHeld),
                                 OPERATION(Ifc, callRetrieved),
                                 OPERATION(Ifc, featureSuccess),
                                 OPERATION(Ifc, featureFailed),
                                 OPERATION(Ifc, remoteEndpointDetailsChanged),
                                 OPERATION(Ifc, incomingCallMissed),
                                 OPERATION(Ifc, callForwarded),
                                 OPERATION(Ifc, incomingAssociatedCall),
                                 OPERATION(Ifc, devicesChanged),
                                 OPERATION(Ifc, messageWaiting),
                                 OPERATION(Ifc, doNotDisturbSet),
                                 OPERATION(Ifc, agentStateSet),
                                 OPERATION(Ifc, securityStatusChanged),
                                 OPERATION(Ifc, callRecordingStatus),
                                 OPERATION(Ifc, preemptionStatusChanged),
                                 OPERATION(Ifc, impactLevelChanged),
                                 OPERATION(Ifc, systemStatusChange),
                                 OPERATION(Ifc, serverFeatureStatusChange),
                                 OPERATION(Ifc, b2buaCSTAResponse),
                                 OPERATION(Ifc, b2buaCSTAEventOrRequest),
                                 OPERATION(Ifc, conferenceStatusEvent),
                                 OPERATION(Ifc, callCompletionEvent),
                                 OPERATION(Ifc, callCompletionFailedEvent),
                                 OPERATION(Ifc, bluetoothAudioStatusChanged),
                                 OPERATION(Ifc, csCommunicationsServiceEvent),
                             });
}

TEST(OrderTest, CommunicationsServiceInvoker)
{
    expectWholeOrder<CommunicationsServiceInvoker>(kAfterDestructors,
                                                   {
                                                       OPERATION(CommunicationsServiceInvoker, handleMessage),
                                                       OPERATION(CommunicationsServiceInvoker, initInvoker),
                                                   });
}

// The proxy's own table lists the operations of the interface in another order.
TEST(OrderTest, CommunicationsServiceEventProxy)
{
    using Own = CommunicationsServiceEventProxy;
    expectWholeOrder<Own>(kAfterDestructors, {
                                                 OPERATION(Own, init),
                                                 OPERATION(Own, shutdown),
                                                 OPERATION(Own, timerEvent),
                                                 OPERATION(Own, initProxy),
                                                 OPERATION(Own, callStateChange),
                                                 OPERATION(Own, registrationStateChange),
                                                 OPERATION(Own, incomingCall),
                                                 OPERATION(Own, incomingPickupCall),
                                                 OPERATION(Own, callHeld),
                                                 OPERATION(Own, callRetrieved),
                                                 OPERATION(Own, featureSuccess),
                                                 OPERATION(Own, featureFailed),
                                                 OPERATION(Own, remoteEndpointDetailsChanged),
                                                 OPERATION(Own, incomingCallMissed),
                                                 OPERATION(Own, callForwarded),
                                                 OPERATION(Own, devicesChanged),
                                                 OPERATION(Own, doNotDisturbSet),
                                                 OPERATION(Own, agentStateSet),
                                                 OPERATION(Own, preemptionStatusChanged),
                                                 OPERATION(Own, impactLevelChanged),
                                                 OPERATION(Own, securityStatusChanged),
                                                 OPERATION(Own, callRecordingStatus),
                                                 OPERATION(Own, messageWaiting),
                                                 OPERATION(Own, systemStatusChange),
                                                 OPERATION(Own, serverFeatureStatusChange),
                                                 OPERATION(Own, b2buaCSTAResponse),
                                                 OPERATION(Own, b2buaCSTAEventOrRequest),
                                                 OPERATION(Own, conferenceStatusEvent),
                                                 OPERATION(Own, incomingAssociatedCall),
                                                 OPERATION(Own, callCompletionEvent),
                                                 OPERATION(Own, callCompletionFailedEvent),
                                                 OPERATION(Own, bluetoothAudioStatusChanged),
                                                 OPERATION(Own, csCommunicationsServiceEvent),
                                             });
}

}  // namespace
