#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/team/DirectedPickupHandler.h"

class MockDirectedPickupHandler : public DirectedPickupHandler
{
public:
    virtual ~MockDirectedPickupHandler() = default;

    MOCK_METHOD(void, setCommsSrv, (SvcRTEContext * context, Executable* service), (override));
    MOCK_METHOD(void, Initialise, (), (override));
    MOCK_METHOD(void, timerExpired, (int timerId), (override));
    MOCK_METHOD(sfiResult, directedPickupRequest, (sfiCallInfo * call, std::string& target), (override));
};
static_assert(!std::is_abstract_v<MockDirectedPickupHandler>);
