// Records calls: when recording is switched on for a line, each call with audio on the line at that moment is recorded
// into a file of its own, until recording is switched off or the call ends. The composition root owns the one object,
// makes it after the call engine, adds it to the engine as an observer, and destroys it before the engine.
//
// Any thread may call, with or without the phone lock. The phone lock is taken before the recorder's own lock, so the
// recorder holds that only while it calls nobody else. Events: callRecordingStatus "true" when the recording of a call
// starts, "false" when its file is complete or nothing could be recorded; each is followed by securityStatusChanged,
// which lists all recorded calls.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/recording/MediaRecordingService.h"
#include "telephone/base/Refusal.h"
#include "telephone/calls/CallObserver.h"
#include "telephone/calls/EventPoster.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/framework/OnlyObject.h"
#include "telephone/recording/CallRecording.h"
#include "telephone/time/Condition.h"
#include "telephone/time/Thread.h"

namespace telephone {

// The recorder's view of the call engine.
struct RecordableCalls
{
    std::function<std::vector<CallSnapshot>()> calls;
    std::function<bool(int callID, AudioTap& tap)> addTap;
    std::function<void(int callID, AudioTap& tap)> removeTap;  // also for a call that has ended
};

template <typename Engine>
RecordableCalls recordableCallsOf(Engine& engine)
{
    return {[&engine] { return engine.calls(); },
            [&engine](int callID, AudioTap& tap) { return engine.addTap(callID, tap); },
            [&engine](int callID, AudioTap& tap) { engine.removeTap(callID, tap); }};
}

class CallRecorder : public MediaRecordingService, public CallObserver
{
public:
    CallRecorder(RecordingConfiguration configuration, RecordableCalls calls, EventPoster post);
    ~CallRecorder() override;

    // MediaRecordingService
    void init(Context& context, Executable* service, MgmtAgentIfc* agent,
              RecordingConfigManager* configuration) override;
    void init(Context& context, Executable* service, MgmtAgentIfc* agent) override;
    bool activateRecording(std::string const& lineURI) override;
    bool deactivateRecording(std::string const& lineURI) override;
    void dataChangedEvent(ManageableData& data) override;

    // The ids of the calls that are being recorded.
    std::vector<int> recordedCalls() const;

    // CallObserver
    void callChanged(CallSnapshot const& now, CallSnapshot const* before) override;

private:
    using Recordings = std::vector<std::shared_ptr<CallRecording>>;
    using Choice = std::function<bool(CallRecording const&)>;

    Outcome<> mayRecord() const;
    Outcome<> start(CallSnapshot const& call);
    void sendNotRecorded(CallSnapshot const& call);
    // False when the call is already being recorded.
    bool list(std::shared_ptr<CallRecording> const& recording);
    std::vector<CallSnapshot> listed() const;
    // Ends the chosen recordings; false when there is none.
    bool end(Choice const& choice);
    // Tells that the recording of a call has started or ended. With the recorder's lock held, so that events follow the
    // order of changes.
    void sendStatus(CallSnapshot const& call, bool recorded);
    std::string pathFor(CallSnapshot const& call) const;
    void run();
    void writeAll(Recordings const& recordings);
    void complete(std::shared_ptr<CallRecording> const& recording);

    RecordingConfiguration const settings_;
    RecordableCalls const calls_;
    EventPoster const post_;
    mutable std::mutex mutex_;
    Condition changed_{"recordings"};
    std::unique_ptr<RecordingConfigManager> configuration_;
    MgmtAgentIfc* agent_ = nullptr;
    Recordings recordings_;  // until their files are complete
    bool ends_ = false;
    OnlyObject<CallRecorder> const only_{*this, "a recorder"};
    Thread thread_;
};

}  // namespace telephone
