#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/framework/Proxy.h"
#include "platform/framework/SvcRTEContext.h"

class MockSvcRTEContext : public SvcRTEContext
{
public:
    MOCK_METHOD(Proxy*, findProxy, (std::string const& interfaceName, std::string const& channelName), (override));
    MOCK_METHOD(std::string, findChannel, (Executable * executable), (override));
    MOCK_METHOD(Executable*, findExecutable, (std::string const& name), (override));
};
static_assert(!std::is_abstract_v<MockSvcRTEContext>);
