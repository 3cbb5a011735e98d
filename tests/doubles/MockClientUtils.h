// Stands in for the splitting of device identities in tests. Without one installed an identity has no index.
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
