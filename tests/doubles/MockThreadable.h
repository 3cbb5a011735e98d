#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/framework/Threadable.h"

class MockThreadable : public Threadable
{
public:
    MOCK_METHOD(void, run, (), (override));
    MOCK_METHOD(int, getThreadPriorityForPlatform, (), (override));
    MOCK_METHOD(int, type, (), (override));
};
static_assert(!std::is_abstract_v<MockThreadable>);
