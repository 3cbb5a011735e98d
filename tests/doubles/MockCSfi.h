#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/framework/SvcRTEContext.h"
#include "platform/management/ManageableData.h"
#include "platform/sfi/CSfi.h"

class MockCSfi : public CSfi
{
public:
    virtual ~MockCSfi() = default;

    MOCK_METHOD(void, Initialise, (SvcRTEContext * context), (override));
    MOCK_METHOD(void, SetCommsService, (Executable * service), (override));
    MOCK_METHOD(sfiResult, Activate, (), (override));
    MOCK_METHOD(sfiResult, Deactivate, (bool final, bool allowAutoActivate), (override));
    MOCK_METHOD(void, Startup, (), (override));
    MOCK_METHOD(sfiResult, Subscribe, (Executable * subscriber), (override));
    MOCK_METHOD(sfiResult, CallMake,
                (sfiCallInfo * call, std::string const& destination, int mode, int option, bool dssDirectCall,
                 bool bridgeCall, bool callCompletionCall, bool numberFlag),
                (override));
    MOCK_METHOD(sfiResult, GroupPickup, (sfiCallInfo * call), (override));
    MOCK_METHOD(sfiResult, CallClear, (sfiCallInfo * call, CSTAEventCause cause), (override));
    MOCK_METHOD(sfiResult, CallRetrieve, (sfiCallInfo * call), (override));
    MOCK_METHOD(sfiResult, CallAccept, (sfiCallInfo * call), (override));
    MOCK_METHOD(sfiResult, CallAnswer, (sfiCallInfo * call), (override));
    MOCK_METHOD(sfiResult, CallRefuse, (sfiCallInfo * call, sfiRefuseCall reason), (override));
    MOCK_METHOD(sfiResult, CallFeature, (sfiCallInfo * call, sfiFeature feature, char const* destination, int mode),
                (override));
    MOCK_METHOD(void, SetManualHoldIndication, (sfiCallInfo * call, bool manual), (override));
    MOCK_METHOD(sfiResult, GetManualHoldIndication, (sfiCallInfo * call), (override));
    MOCK_METHOD(sfiResult, SetServiceState, (sfiServiceState state), (override));
    MOCK_METHOD(sfiResult, GetServiceState, (sfiServiceState & state), (override));
    MOCK_METHOD(sfiResult, GenerateDigits, (sfiCallInfo * call, char const* digits), (override));
    MOCK_METHOD(sfiResult, InitializeOrFinalizeServerFeatures, (std::string const& lineURI, bool initialize),
                (override));
    MOCK_METHOD(sfiResult, SendCSTARequest, (std::string const& lineURI, std::string const& body), (override));
    MOCK_METHOD(sfiResult, ActivateCallbackRinging, (sfiCallInfo * call), (override));
    MOCK_METHOD(sfiResult, ActivateCallbackBusy, (sfiCallInfo * call), (override));
    MOCK_METHOD(sfiResult, CancelCallbacks,
                (sfiCallInfo * call, std::string& target, sfiCancelCallBackType type, bool displayOutcome), (override));
    MOCK_METHOD(sfiResult, SetMicrophoneMute, (bool mute), (override));
    MOCK_METHOD(sfiResult, GetMicrophoneMute, (bool& mute), (override));
    MOCK_METHOD(sfiResult, SetDoNotDisturb, (int lineID, bool on), (override));
    MOCK_METHOD(sfiResult, GetDoNotDisturb, (int lineID, bool& on), (override));
    MOCK_METHOD(void, GetDNDEnabled, (bool& enabled), (override));
    MOCK_METHOD(void, GetAgentFeatureEnabled, (bool& enabled), (override));
    MOCK_METHOD(sfiResult, SetAgentState, (int lineID, std::string const& state), (override));
    MOCK_METHOD(void, SystemStatus, (std::string const& status, std::string const& statusInfo, int option), (override));
    MOCK_METHOD(bool, IsPhoneLocked, (), (override));
    MOCK_METHOD(void, SendFeatureFailureNotification, (int lineID, int feature, int failure), (override));
    MOCK_METHOD(void, SetHeadsetPlugged, (bool plugged), (override));
    MOCK_METHOD(void, HandleKeyFunction, (int keyFunction), (override));
    MOCK_METHOD(void, JackEvent, (), (override));
    MOCK_METHOD(void, NotifyViewState, (int view), (override));
    MOCK_METHOD(void, TimerExpired, (int timerId), (override));
    MOCK_METHOD(void, SetPhysicalInterface, (PhysicalInterfaceServiceIfc * physicalInterface), (override));
    MOCK_METHOD(void, SetAuditoryDevice, (AuditoryDeviceIfc * auditoryDevice), (override));
    MOCK_METHOD(int, ApplyManageableData, (ManageableData & data, bool changed), (override));
    MOCK_METHOD(int, GetHotWarmLineStatus, (int lineID), (override));
    MOCK_METHOD(int, GetLineHeadsetOverride, (), (override));
    MOCK_METHOD(sfiResult, GetMessageWaitingIndicator,
                (std::string const& phoneNumber, sfiMessageWaitingRecord& record), (override));
    MOCK_METHOD(void, SetAssociatedCalls, (bool associated), (override));
    MOCK_METHOD(void, Lock, (), (override));
    MOCK_METHOD(void, Unlock, (), (override));
    MOCK_METHOD(int, StartTimer, (int milliseconds), (override));
    MOCK_METHOD(sfiResult, SecurityChangeReinvite, (sfiCallInfo * call, bool secure), (override));
    MOCK_METHOD(void, Start, (), (override));
    MOCK_METHOD(void, NotifyFPKAvailable, (), (override));
    MOCK_METHOD(sfiResult, SendUACSTAServerMessage, (std::string & body), (override));
    MOCK_METHOD(SfiMCAMapper*, GetMCAMapper, (), (override));
    MOCK_METHOD(void, GetBluetoothLineURI, (int device, std::string& lineURI, std::string& name), (override));
    MOCK_METHOD(int, GetDialRestrictionMode, (), (override));
    MOCK_METHOD(void, setCFChangesPending, (bool pending), (override));
};
static_assert(!std::is_abstract_v<MockCSfi>);
