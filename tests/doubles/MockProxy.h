// Stands in for an event proxy in tests.
#pragma once

#include <gmock/gmock.h>

#include <type_traits>

#include "framework/Proxy.h"
#include "framework/ProxyRequest.h"
#include "framework/SvcRTEContext.h"

class MockProxy : public Proxy
{
public:
    MOCK_METHOD(void, init, (Context & context), (override));
    MOCK_METHOD(void, shutdown, (), (override));
    MOCK_METHOD(void, timerEvent, (int timerId), (override));
    MOCK_METHOD(void, initProxy, (ProxyRequest & request), (override));
};
static_assert(!std::is_abstract_v<MockProxy>);
