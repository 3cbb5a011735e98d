// Is told when SIPConfigManager objects are created, used and destroyed.
#pragma once

#include <gmock/gmock.h>

#include "platform/management/ManageableData.h"
#include "platform/management/SIPConfigManager.h"

class MockSIPConfigManager
{
public:
    virtual ~MockSIPConfigManager() = default;

    MOCK_METHOD(void, created, (SvcRTEContext * context, MgmtAgentIfc* agent));
    MOCK_METHOD(void, destroyed, ());
    MOCK_METHOD(void, initialise, (bool apply));
    MOCK_METHOD(void, switchOnLampsForForwarding, ());
    MOCK_METHOD(void, checkDhcpProxyAddr, ());
    MOCK_METHOD(int, getData, (ManageableData & data));
    MOCK_METHOD(void, resetUserData, ());
};
