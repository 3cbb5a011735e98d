// Without an installed mock, a device identity has no index.
#pragma once

#include <string>

#include <gmock/gmock.h>

#include "platform/lines/ClientUtils.h"

class MockClientUtils
{
public:
    virtual ~MockClientUtils() = default;

    MOCK_METHOD(void, splitMCADeviceIndex, (std::string const& lineURI, std::string& baseURI, int& index));
};
