// Without an installed mock, a list is written as "[a,b]".
#pragma once

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "platform/framework/Serializer.h"

class MockSerializer
{
public:
    virtual ~MockSerializer() = default;

    MOCK_METHOD(std::string, numbers, (std::vector<int> const& values));
    MOCK_METHOD(std::string, texts, (std::vector<std::string> const& values));
};
