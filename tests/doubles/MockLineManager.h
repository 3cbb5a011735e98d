#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/lines/LineManager.h"

class MockLineManager : public LineManager
{
public:
    virtual ~MockLineManager() = default;

    MOCK_METHOD(void, initialise, (), (override));
    MOCK_METHOD(bool, isMCALine, (std::string const& baseURI), (override));
    MOCK_METHOD(Line*, getLine, (std::string const& lineURI), (override));
    MOCK_METHOD(Line*, getDSSLineForFPK, (int keyNumber), (override));
    MOCK_METHOD(Line*, getLineForFPK, (int keyNumber), (override));
    MOCK_METHOD(std::string, getKeysetType, (), (override));
    MOCK_METHOD(void, getDeviceList, (std::vector<std::string> & devices), (override));
    MOCK_METHOD(std::string, getLocalHeldLine, (), (override));
    MOCK_METHOD(Line*, getLineInState, (ELineState state, std::string const& baseURI), (override));
    MOCK_METHOD(bool, isLocallyIdleLine, (), (override));
    MOCK_METHOD(bool, observe, (Executable * observer), (override));
    MOCK_METHOD(void, requestOverviewData, (std::string const& lineURI), (override));
    MOCK_METHOD(void, setPhysicalInterface, (PhysicalInterfaceServiceIfc * physicalInterface), (override));
    MOCK_METHOD(void, setDigitAnalysisService, (DigitAnalysisServiceIfc * digitAnalysis), (override));
    MOCK_METHOD(int, getFPKforUri, (std::string const& lineURI), (override));
    MOCK_METHOD(std::string, getURIforFPK, (int keyNumber), (override));
    MOCK_METHOD(bool, lineConsideredAsPrivate, (std::string const& lineURI), (override));
};
static_assert(!std::is_abstract_v<MockLineManager>);
