#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/sfi/SfiMCAMapper.h"

class MockSfiMCAMapper : public SfiMCAMapper
{
public:
    virtual ~MockSfiMCAMapper() = default;

    MOCK_METHOD(void, assignCallToLine, (int lineID, int callID, int& appearanceIndex), (override));
    MOCK_METHOD(int, findFirstFreeVirtualLine, (int lineID), (const, override));
    MOCK_METHOD(bool, findVirtualLineforCallID, (int callID, int& lineID, int& appearanceIndex), (const, override));
};
static_assert(!std::is_abstract_v<MockSfiMCAMapper>);
