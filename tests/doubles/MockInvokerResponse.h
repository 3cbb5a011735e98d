#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/framework/InvokerResponse.h"

class MockInvokerResponse : public InvokerResponse
{
public:
    MOCK_METHOD(void, finish, (), (override));
    MOCK_METHOD(void, sendResponse, (char const* answer, int length), (override));
    MOCK_METHOD(std::string const&, channelName, (), (override));
};
static_assert(!std::is_abstract_v<MockInvokerResponse>);
