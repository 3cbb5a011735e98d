#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/physical/PhysicalInterfaceServiceIfc.h"

class MockPhysicalInterfaceServiceIfc : public PhysicalInterfaceServiceIfc
{
public:
    virtual ~MockPhysicalInterfaceServiceIfc() = default;

    MOCK_METHOD(bool, subscribePhysicalEvents,
                (physicalEventObserver * observer, std::vector<PhysDefs::SubscriptionGrp>& groups), (override));
    MOCK_METHOD(bool, subscribeFunctionalEvents,
                (functionalEventObserver * observer, std::vector<PhysDefs::SubscriptionGrp>& subscriptions),
                (override));
    MOCK_METHOD(void, setLamp, (int lamp, int mode, int colour, int option), (override));
    MOCK_METHOD(PhysDefs::plugStatus, getHeadsetJackStatus, (), (override));
    MOCK_METHOD(void, forwardingCleared, (), (override));
};
static_assert(!std::is_abstract_v<MockPhysicalInterfaceServiceIfc>);
