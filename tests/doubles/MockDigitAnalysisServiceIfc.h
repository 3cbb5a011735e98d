#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/services/DigitAnalysisServiceIfc.h"

class MockDigitAnalysisServiceIfc : public DigitAnalysisServiceIfc
{
public:
    virtual ~MockDigitAnalysisServiceIfc() = default;

    MOCK_METHOD(bool, isPermittedNumber, (std::string const& number), (override));
    MOCK_METHOD(bool, isPermittedNumberInContext, (std::string const& number, int context), (override));
    MOCK_METHOD(void, queryNumberFlag, (std::string const& number, std::string& answer), (override));
};
static_assert(!std::is_abstract_v<MockDigitAnalysisServiceIfc>);
