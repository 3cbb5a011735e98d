#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/lines/LineData.h"

class MockLineData : public LineData
{
public:
    virtual ~MockLineData() = default;

    MOCK_METHOD(std::string, getURI, (), (override));
    MOCK_METHOD(int, getPrimary, (), (override));
    MOCK_METHOD(std::string, getShortDescription, (), (override));
    MOCK_METHOD(int, getRing, (), (override));
    MOCK_METHOD(int, getRingDelay, (), (override));
    MOCK_METHOD(int, getOverviewPosition, (), (override));
    MOCK_METHOD(bool, getVisibleOnOverview, (), (override));
    MOCK_METHOD(int, getLineAudibleAlert, (), (override));
    MOCK_METHOD(std::string, getHotWarmDigits, (), (override));
    MOCK_METHOD(int, getHotWarmType, (), (override));
    MOCK_METHOD(int, getSharedLineType, (), (override));
    MOCK_METHOD(bool, getDSSMonitorOnly, (), (override));
    MOCK_METHOD(void, setHotWarmLineManual, (bool manual), (override));
};
static_assert(!std::is_abstract_v<MockLineData>);
