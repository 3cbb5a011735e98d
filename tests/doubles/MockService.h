#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/framework/Service.h"
#include "platform/framework/SvcRTEContext.h"

class MockService : public Service
{
public:
    MOCK_METHOD(void, init, (Context & context), (override));
    MOCK_METHOD(void, shutdown, (), (override));
    MOCK_METHOD(void, timerEvent, (int timerId), (override));
    MOCK_METHOD(void, run, (), (override));
    MOCK_METHOD(int, getThreadPriorityForPlatform, (), (override));
    MOCK_METHOD(int, type, (), (override));
};
static_assert(!std::is_abstract_v<MockService>);
