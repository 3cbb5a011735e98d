#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/framework/FrameworkContext.h"
#include "platform/framework/ProxyRequest.h"

class MockProxyRequest : public ProxyRequest
{
public:
    MOCK_METHOD(void, setProtocol, (std::string const& protocolName), (override));
    MOCK_METHOD(void, sendEvent, (std::string const& message), (override));
    MOCK_METHOD(FrameworkContext&, context, (), (override));
};
static_assert(!std::is_abstract_v<MockProxyRequest>);
