#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/framework/FrameworkContext.h"
#include "platform/framework/Proxy.h"

class MockFrameworkContext : public FrameworkContext
{
public:
    MOCK_METHOD(Proxy*, findProxy, (std::string const& interfaceName, std::string const& channelName), (override));
    MOCK_METHOD(std::string, findChannel, (Executable * executable), (override));
    MOCK_METHOD(Executable*, findExecutable, (std::string const& name), (override));
};
static_assert(!std::is_abstract_v<MockFrameworkContext>);
