#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/physical/AuditoryDeviceIfc.h"

class MockAuditoryDeviceIfc : public AuditoryDeviceIfc
{
public:
    virtual ~MockAuditoryDeviceIfc() = default;

    MOCK_METHOD(void, useHeadset, (bool headset), (override));
    MOCK_METHOD(void, setRinging, (bool ringing), (override));
};
static_assert(!std::is_abstract_v<MockAuditoryDeviceIfc>);
