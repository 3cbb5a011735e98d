#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/management/LocalMgmtIfc.h"
#include "platform/management/ManageableData.h"

class MockLocalMgmtIfc : public LocalMgmtIfc
{
public:
    virtual ~MockLocalMgmtIfc() = default;

    MOCK_METHOD(int, setManageableData, (ManageableData & data), (override));
    MOCK_METHOD(void, registerForTag, (MgmtAgentIfc * agent, char const* tag), (override));
};
static_assert(!std::is_abstract_v<MockLocalMgmtIfc>);
