#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/physical/functionalEventObserver.h"

class MockfunctionalEventObserver : public functionalEventObserver
{
public:
    virtual ~MockfunctionalEventObserver() = default;

    MOCK_METHOD(void, functionPressedEvent,
                (PhysDefs::keyFunctionType function, int key, PhysDefs::actionType action, std::string text),
                (override));
    MOCK_METHOD(void, getDestinationChannelName, (std::string & name), (override));
    MOCK_METHOD(Executable*, getSubscribingService, (), (override));
};
static_assert(!std::is_abstract_v<MockfunctionalEventObserver>);
