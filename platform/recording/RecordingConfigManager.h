// The settings of call recording. The service creates one and hands it to the recording service, which owns it from
// then on; the telephone defines its members.
#pragma once

#include <memory>

class SvcRTEContext;

class RecordingConfigManager
{
public:
    explicit RecordingConfigManager(SvcRTEContext* context);
    virtual ~RecordingConfigManager();
    RecordingConfigManager(RecordingConfigManager const&) = delete;
    RecordingConfigManager& operator=(RecordingConfigManager const&) = delete;

    // Whether calls may be recorded at all.
    bool isRecordingEnabled() const;

private:
    class State;
    std::unique_ptr<State> state_;
};
