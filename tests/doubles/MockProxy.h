#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/framework/Proxy.h"
#include "platform/framework/ProxyRequest.h"
#include "platform/framework/SvcRTEContext.h"

class MockProxy : public Proxy
{
public:
    MOCK_METHOD(void, init, (Context & context), (override));
    MOCK_METHOD(void, shutdown, (), (override));
    MOCK_METHOD(void, timerEvent, (int timerId), (override));
    MOCK_METHOD(void, initProxy, (ProxyRequest & request), (override));
};
static_assert(!std::is_abstract_v<MockProxy>);
