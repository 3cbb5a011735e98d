#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/team/EACockpitHandler.h"

class MockEACockpitHandler : public EACockpitHandler
{
public:
    virtual ~MockEACockpitHandler() = default;

    MOCK_METHOD(std::string, getEACockpitData, (std::string const& item), (override));
    MOCK_METHOD(bool, setEACockpitData, (std::string const& item, std::string const& value), (override));
};
static_assert(!std::is_abstract_v<MockEACockpitHandler>);
