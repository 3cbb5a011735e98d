// The readers of the SIP configuration. Without an installed mock every reader gives zero, false or the empty text.
#pragma once

#include <string>

#include <gmock/gmock.h>

#include "platform/sfi/SfiConfiguration.h"

class MockSfiConfiguration
{
public:
    virtual ~MockSfiConfiguration() = default;

    MOCK_METHOD(bool, serverBasedFeaturesEnabled, ());
    MOCK_METHOD(int, serverType, ());
    MOCK_METHOD(int, cfPrivacyMode, ());
    MOCK_METHOD(std::string, cpuAddr, ());
    MOCK_METHOD(std::string, currentPhoneNumber, ());
    MOCK_METHOD(std::string, directedPickupUri, ());
    MOCK_METHOD(std::string, voiceMailDialUri, ());
    MOCK_METHOD(std::string, registrationId, (int registration));
    MOCK_METHOD(bool, builtInForwardingEnabled, ());
    MOCK_METHOD(int, unconditionalEnable, ());
    MOCK_METHOD(int, unconditionalExtEnable, ());
    MOCK_METHOD(int, unconditionalIntEnable, ());
    MOCK_METHOD(int, busyEnable, ());
    MOCK_METHOD(int, busyExtEnable, ());
    MOCK_METHOD(int, busyIntEnable, ());
    MOCK_METHOD(int, noReplyEnable, ());
    MOCK_METHOD(int, noReplyExtEnable, ());
    MOCK_METHOD(int, noReplyIntEnable, ());
    MOCK_METHOD(std::string, unconditionalUri, ());
    MOCK_METHOD(std::string, unconditionalExtUri, ());
    MOCK_METHOD(std::string, unconditionalIntUri, ());
    MOCK_METHOD(std::string, busyUri, ());
    MOCK_METHOD(std::string, busyExtUri, ());
    MOCK_METHOD(std::string, busyIntUri, ());
    MOCK_METHOD(std::string, noReplyUri, ());
    MOCK_METHOD(std::string, noReplyExtUri, ());
    MOCK_METHOD(std::string, noReplyIntUri, ());
    MOCK_METHOD(int, noReplyTime, ());
};
