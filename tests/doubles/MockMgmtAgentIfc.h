#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/management/ManageableData.h"
#include "platform/management/MgmtAgentIfc.h"

class MockMgmtAgentIfc : public MgmtAgentIfc
{
public:
    MOCK_METHOD(int, setData, (ManageableData & data), (override));
    MOCK_METHOD(int, getData, (ManageableData & data), (override));
    MOCK_METHOD(void, manageableDataChanged, (ManageableData & data), (override));
    MOCK_METHOD(void, resetUserData, (), (override));
};
static_assert(!std::is_abstract_v<MockMgmtAgentIfc>);
