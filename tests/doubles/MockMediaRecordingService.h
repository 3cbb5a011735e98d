#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/framework/SvcRTEContext.h"
#include "platform/management/ManageableData.h"
#include "platform/recording/MediaRecordingService.h"

class MockMediaRecordingService : public MediaRecordingService
{
public:
    virtual ~MockMediaRecordingService() = default;

    MOCK_METHOD(void, init,
                (Context & context, Executable* service, MgmtAgentIfc* agent, RecordingConfigManager* configuration),
                (override));
    MOCK_METHOD(void, init, (Context & context, Executable* service, MgmtAgentIfc* agent), (override));
    MOCK_METHOD(bool, activateRecording, (std::string const& lineURI), (override));
    MOCK_METHOD(bool, deactivateRecording, (std::string const& lineURI), (override));
    MOCK_METHOD(void, dataChangedEvent, (ManageableData & data), (override));
};
static_assert(!std::is_abstract_v<MockMediaRecordingService>);
