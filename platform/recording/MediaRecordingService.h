/// @file
/// Recording of calls.
#pragma once

#include <string>

#include "platform/framework/Executable.h"

class ManageableData;
class MgmtAgentIfc;
class RecordingConfigManager;

/// Records calls. The telephone owns the one object. Thread: any, without CSfi's Lock.
class MediaRecordingService
{
public:
    /// The recorder of this telephone.
    /// @return Never null; a telephone that does not record returns one that refuses.
    static MediaRecordingService* GetInstance();

    /// Binds the recorder to the service, in each `init` of it.
    /// @param context the framework's; outlives the recorder's use of it
    /// @param service the service
    /// @param agent receives changes of the recording settings
    /// @param configuration the settings; the recorder owns it from now on and deletes a former one
    virtual void init(Context& context, Executable* service, MgmtAgentIfc* agent,
                      RecordingConfigManager* configuration) = 0;
    /// Binds the recorder to the service without settings, when it is needed before the service's `init`; `context` is
    /// then an empty one.
    virtual void init(Context& context, Executable* service, MgmtAgentIfc* agent) = 0;
    /// Records the calls of a line.
    /// @return true when at least one call is recorded, also when it was already; false when no call of the line is
    ///     connected, when recording is disabled or when no file can be written.
    virtual bool activateRecording(std::string const& lineURI) = 0;
    /// Ends the recordings of a line.
    /// @return false when none of its calls is recorded.
    virtual bool deactivateRecording(std::string const& lineURI) = 0;
    /// Settings have changed; recordings end when they are not allowed any longer. Every change that the service is
    /// told of arrives, also of settings that do not concern recording.
    virtual void dataChangedEvent(ManageableData& data) = 0;

protected:
    /// Never deleted through this interface.
    ~MediaRecordingService() = default;
};
