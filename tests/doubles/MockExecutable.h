#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/framework/Executable.h"
#include "platform/framework/SvcRTEContext.h"

class MockExecutable : public Executable
{
public:
    MOCK_METHOD(void, init, (Context & context), (override));
    MOCK_METHOD(void, shutdown, (), (override));
    MOCK_METHOD(void, timerEvent, (int timerId), (override));
};
static_assert(!std::is_abstract_v<MockExecutable>);
