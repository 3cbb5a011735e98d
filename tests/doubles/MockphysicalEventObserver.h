#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/physical/physicalEventObserver.h"

class MockphysicalEventObserver : public physicalEventObserver
{
public:
    virtual ~MockphysicalEventObserver() = default;

    MOCK_METHOD(void, buttonPressedEvent,
                (PhysDefs::keyFunctionType function, int key, PhysDefs::actionType action, std::string text),
                (override));
    MOCK_METHOD(void, hookswitchEvent, (PhysDefs::actionType action), (override));
    MOCK_METHOD(void, jackEvent, (PhysDefs::plugIdentifier plug, PhysDefs::plugStatus status), (override));
    MOCK_METHOD(void, hotplugEvent,
                (PhysDefs::hotplugAction action, PhysDefs::hotplugBus bus, PhysDefs::hotplugClass deviceClass,
                 std::string vendor, std::string product),
                (override));
    MOCK_METHOD(void, lampEvent, (int lamp, PhysDefs::lampMode mode, PhysDefs::lampColour colour), (override));
    MOCK_METHOD(void, sliderEvent, (int position), (override));
    MOCK_METHOD(void, clickwheelEvent, (int steps), (override));
    MOCK_METHOD(void, physicalInactivityTimerExpired, (int seconds), (override));
    MOCK_METHOD(void, fpkAvailableEvent, (), (override));
    MOCK_METHOD(void, shiftChangeEvent, (bool shifted), (override));
    MOCK_METHOD(void, activityDetected, (), (override));
    MOCK_METHOD(void, getDestinationChannelName, (std::string & name), (override));
    MOCK_METHOD(Executable*, getSubscribingService, (), (override));
    MOCK_METHOD(void, shiftChangeEventForCertainFPKey, (bool shifted, int key), (override));
};
static_assert(!std::is_abstract_v<MockphysicalEventObserver>);
