#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/team/TeamServiceFeatures.h"

class MockTeamServiceFeatures : public TeamServiceFeatures
{
public:
    virtual ~MockTeamServiceFeatures() = default;

    MOCK_METHOD(void, setPhysicalInterface, (PhysicalInterfaceServiceIfc * physicalInterface), (override));
    MOCK_METHOD(void, setLocalMgmtInterface, (LocalMgmtIfc * localMgmt), (override));
    MOCK_METHOD(void, processInvokeDOAction, (int feature, int instanceId, bool on, std::string const& data),
                (override));
    MOCK_METHOD(void, processInvokeDVAction,
                (ZEBLocalFeaturesDefs::LF_NOTIFICATION_ID notification, int feature, int instanceId,
                 ZEBLocalFeaturesDefs::eActionType action),
                (override));
    MOCK_METHOD(void, callbackDOFeatureCallID, (std::string const& callId, int instanceId), (override));
    MOCK_METHOD(void, setCommsSrv, (SvcRTEContext * context, Executable* service), (override));
    MOCK_METHOD(void, setCertMgmtInterface, (CertificateMgmtSvcIfc * certificateMgmt), (override));
    MOCK_METHOD(void, Activate, (), (override));
    MOCK_METHOD(void, timerExpired, (int timerId), (override));
    MOCK_METHOD(void, HandleButtonPressedEvent,
                (int key, PhysDefs::keyFunctionType function, PhysDefs::actionType action), (override));
    MOCK_METHOD(void, HandleForwardingAlternative, (std::string const& destination), (override));
    MOCK_METHOD(sfiResult, BLFPickupRequest, (sfiCallInfo * call, std::string& target), (override));
    MOCK_METHOD(void, blfKeyPressedFPK, (int keyNumber, bool transfer), (override));
    MOCK_METHOD(void, setDNDStatusForBLF, (std::string const& blfLedControlURI, bool dndOn), (override));
    MOCK_METHOD(void, sendURLPushRequest, (std::string & url, std::string& data), (override));
    MOCK_METHOD(EACockpitHandler*, getEACockpitHandler, (), (override));
};
static_assert(!std::is_abstract_v<MockTeamServiceFeatures>);
