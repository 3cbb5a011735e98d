#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/lines/Line.h"
#include "platform/lines/LineData.h"

class MockLine : public Line
{
public:
    virtual ~MockLine() = default;

    MOCK_METHOD(void, keyPressed, (), (override));
    MOCK_METHOD(void, dssKeyPressed,
                (EDSSContext context, std::string const& digits, std::string const& ringingLineURI), (override));
    MOCK_METHOD(ELineState, getLineState, (), (override));
    MOCK_METHOD(unsigned char, getLineID, (), (override));
    MOCK_METHOD(sfiResult, retrieve, (), (override));
    MOCK_METHOD(LineData*, getLineData, (), (override));
    MOCK_METHOD(std::string, getLastNotifyRemoteURI, (), (override));
    MOCK_METHOD(int, getChildBCALineIdReservedForConsultationCall, (), (override));
    MOCK_METHOD(void, getServerFeaturesSettings, (serverFeaturesSettings & settings), (override));
    MOCK_METHOD(void, setDNDConfiguration, (bool on), (override));
    MOCK_METHOD(void, setForwardingConfiguration,
                (sfiForwardingType type, bool on, std::string const& destination, int ringCount), (override));
    MOCK_METHOD(void, setMissedCallIndicated, (bool indicated), (override));
};
static_assert(!std::is_abstract_v<MockLine>);
