/// @file
/// The settings of call recording.
#pragma once

#include <memory>

class SvcRTEContext;

/// The settings of call recording. The service creates one in each `init` and hands it to the recording service, which
/// owns it from then on; the telephone defines its members. Thread: any.
class RecordingConfigManager
{
public:
    /// Finds the store in the context, which may be null and otherwise outlives the manager.
    explicit RecordingConfigManager(SvcRTEContext* context);
    /// Deleted by the recording service.
    virtual ~RecordingConfigManager();
    /// Not copied: it has one owner.
    RecordingConfigManager(RecordingConfigManager const&) = delete;
    /// Not copied.
    RecordingConfigManager& operator=(RecordingConfigManager const&) = delete;

    /// Whether calls may be recorded.
    /// @return The setting in force; true in a telephone without a store.
    bool isRecordingEnabled() const;

private:
    class State;
    std::unique_ptr<State> state_;
};
