#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/team/FeatureToggle.h"

class MockFeatureToggle : public FeatureToggle
{
public:
    virtual ~MockFeatureToggle() = default;

    MOCK_METHOD(void, ftInitialise,
                (PhysicalInterfaceServiceIfc * physicalInterface, LocalMgmtIfc* localMgmt, MgmtAgentIfc* agent),
                (override));
    MOCK_METHOD(void, ftToggleKeyPressed, (int keyNumber), (override));
};
static_assert(!std::is_abstract_v<MockFeatureToggle>);
