#pragma once

#include <gmock/gmock.h>

#include "platform/lines/Utility.h"

class MockUtility
{
public:
    virtual ~MockUtility() = default;

    MOCK_METHOD(bool, isLineStateBusy, (ELineState state));
    MOCK_METHOD(bool, bridgeCall, (Line * line));
};
