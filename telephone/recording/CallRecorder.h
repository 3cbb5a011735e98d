// Records calls: switched on and off for a line, it records each call that speaks on the line at that moment into a
// file of its own, until it is switched off or the call ends. The composition root owns the one object, makes it after
// the call engine, adds it to it as observer, and ends it before the engine.
//
// Any thread may call, with or without the phone lock. The phone lock is taken before the recorder's own, so the
// recorder calls nobody while it holds that. Events: callRecordingStatus "true" when the recording of a call starts,
// "false" when its file is complete or nothing could be recorded; each with securityStatusChanged, which lists all
// recorded calls.
#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/recording/MediaRecordingService.h"
#include "telephone/calls/CallObserver.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/recording/CallRecording.h"

class CommunicationsServiceEventIfc;

namespace telephone {

// What the recorder needs of the call engine.
struct RecordableCalls
{
    std::function<std::vector<CallSnapshot>()> calls;
    std::function<bool(int callID, AudioTap& tap)> addTap;
    std::function<void(int callID, AudioTap& tap)> removeTap;  // also for a call that is over
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
    using Event = std::function<void(CommunicationsServiceEventIfc&)>;
    using EventPoster = std::function<void(Event)>;

    CallRecorder(RecordingConfiguration configuration, RecordableCalls calls, EventPoster post);
    ~CallRecorder() override;
    CallRecorder(CallRecorder const&) = delete;
    CallRecorder& operator=(CallRecorder const&) = delete;

    // MediaRecordingService
    void init(Context& context, Executable* service, MgmtAgentIfc* agent,
              RecordingConfigManager* configuration) override;
    void init(Context& context, Executable* service, MgmtAgentIfc* agent) override;
    bool activateRecording(std::string const& lineURI) override;
    bool deactivateRecording(std::string const& lineURI) override;
    void dataChangedEvent(ManageableData& data) override;

    // CallObserver
    void callChanged(CallSnapshot const& now, CallSnapshot const* before) override;

    // The calls that are being recorded, in the order of their start.
    std::vector<CallSnapshot> recordedCalls() const;

private:
    using Recordings = std::vector<std::shared_ptr<CallRecording>>;
    using Choice = std::function<bool(CallRecording const&)>;

    bool mayRecord(std::string const& lineURI);
    bool start(CallSnapshot const& call);
    bool refuse(CallSnapshot const& call);
    bool list(std::shared_ptr<CallRecording> const& recording);
    std::vector<CallSnapshot> listed() const;
    bool end(Choice const& choice);
    void reportStatus(CallSnapshot const& call, bool recorded);
    std::string pathFor(CallSnapshot const& call) const;
    void run();
    void writeAll(Recordings const& recordings);
    void complete(std::shared_ptr<CallRecording> const& recording);

    RecordingConfiguration const settings_;
    RecordableCalls const calls_;
    EventPoster const post_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::unique_ptr<RecordingConfigManager> configuration_;
    MgmtAgentIfc* agent_ = nullptr;
    Recordings recordings_;  // until their files are complete
    bool ends_ = false;
    std::thread thread_;
};

}  // namespace telephone
