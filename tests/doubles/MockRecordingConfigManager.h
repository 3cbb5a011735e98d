// Is told when RecordingConfigManager objects are created, used and destroyed.
#pragma once

#include <gmock/gmock.h>

#include "platform/recording/RecordingConfigManager.h"

class MockRecordingConfigManager
{
public:
    virtual ~MockRecordingConfigManager() = default;

    MOCK_METHOD(void, created, (SvcRTEContext * context));
    MOCK_METHOD(void, destroyed, ());
};
