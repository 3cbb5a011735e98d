// Records calls. The telephone owns the singleton.
#pragma once

#include <string>

#include "platform/framework/Executable.h"

class ManageableData;
class MgmtAgentIfc;
class RecordingConfigManager;

class MediaRecordingService
{
public:
    static MediaRecordingService* GetInstance();

    // Takes over the configuration manager.
    virtual void init(Context& context, Executable* service, MgmtAgentIfc* agent,
                      RecordingConfigManager* configuration) = 0;
    virtual void init(Context& context, Executable* service, MgmtAgentIfc* agent) = 0;
    // Both answer false when there is nothing to record or it could not be started or ended.
    virtual bool activateRecording(std::string const& lineURI) = 0;
    virtual bool deactivateRecording(std::string const& lineURI) = 0;
    virtual void dataChangedEvent(ManageableData& data) = 0;

protected:
    ~MediaRecordingService() = default;
};
