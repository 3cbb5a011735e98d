/// @file
/// MediaRecordingService, answering "not there".
#pragma once

#include <memory>

#include "platform/kit/Missing.h"
#include "platform/management/ManageableData.h"
#include "platform/recording/MediaRecordingService.h"
#include "platform/recording/RecordingConfigManager.h"

namespace kit {

/// A recorder that records nothing. It owns the settings that the service hands over, as the contract asks.
class DefaultMediaRecordingService : public MediaRecordingService
{
public:
    /// Deleted by whoever made it.
    virtual ~DefaultMediaRecordingService() = default;

    void init(Context& /*context*/, Executable* /*service*/, MgmtAgentIfc* /*agent*/,
              RecordingConfigManager* configuration) override
    {
        configuration_.reset(configuration);
        kMissing.report("init", "keep the service; read the settings");
    }
    void init(Context& /*context*/, Executable* /*service*/, MgmtAgentIfc* /*agent*/) override
    {
        kMissing.report("init", "keep the service");
    }
    bool activateRecording(std::string const& /*lineURI*/) override
    {
        kMissing.report("activateRecording", "record the calls of the line");
        return false;
    }
    bool deactivateRecording(std::string const& /*lineURI*/) override
    {
        kMissing.report("deactivateRecording", "end the recordings of the line");
        return false;
    }
    void dataChangedEvent(ManageableData& /*data*/) override
    {
        kMissing.report("dataChangedEvent", "end recordings that are not allowed any longer");
    }

private:
    static constexpr Missing kMissing{"MediaRecordingService", "platform/recording/MediaRecordingService.h"};

    std::unique_ptr<RecordingConfigManager> configuration_;
};

}  // namespace kit
