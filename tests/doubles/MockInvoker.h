#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/framework/Invoker.h"

class MockInvoker : public Invoker
{
public:
    MOCK_METHOD(void, handleMessage, (Executable * service, char const* message, int length, InvokerResponse* response),
                (override));
    MOCK_METHOD(void, initInvoker, (FrameworkContext * context), (override));
};
static_assert(!std::is_abstract_v<MockInvoker>);
