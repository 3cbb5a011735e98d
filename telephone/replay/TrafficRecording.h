// Records what crosses between the telephone and its applications. Telephone owns the one recording. Sessions and the
// event history pass on what happens, on any thread; a queue writes it, so that a slow disk delays nobody. Without a
// recording there is no queue and no listener.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

#include "telephone/access/TrafficRecorder.h"
#include "telephone/framework/EventHistory.h"

namespace telephone {

class RecordingWriter;
class TelephoneControls;

class TrafficRecording : public TrafficRecorder
{
public:
    // They outlive the recording.
    TrafficRecording(EventHistory& history, TelephoneControls& controls);
    // As stop.
    ~TrafficRecording() override;
    TrafficRecording(TrafficRecording const&) = delete;
    TrafficRecording& operator=(TrafficRecording const&) = delete;

    Outcome<> start(std::string const& file) override;
    Outcome<> stop() override;
    [[nodiscard]] bool isOn() const override { return on_; }
    void input(SessionInput const& input) override;
    void reply(std::string_view session, Message const& message) override;

private:
    [[nodiscard]] std::shared_ptr<RecordingWriter> writer();
    // Passes the new events on to the writer.
    void eventsCame();

    EventHistory& history_;
    TelephoneControls& controls_;
    std::atomic<bool> on_{false};
    std::mutex switching_;  // held while a recording begins or ends
    EventHistory::ListenerId listener_ = 0;
    std::mutex mutex_;
    std::shared_ptr<RecordingWriter> writer_;  // null: no recording
};

}  // namespace telephone
