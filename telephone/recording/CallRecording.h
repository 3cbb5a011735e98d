// The recording of one call: takes the audio frames of both directions and writes them to a stereo WAV file, received
// audio on the left, sent audio on the right, 8 kHz, 16 bit.
//
// Frames arrive on the loop's thread under the phone lock and are only queued there; the recorder's thread writes them.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/calls/AudioTap.h"
#include "telephone/calls/CallSnapshot.h"

struct sf_private_tag;

namespace telephone {

class CallRecording : public AudioTap
{
public:
    // One minute of audio may wait for the disk; more ends the recording.
    static constexpr std::size_t kMostQueuedSamples = std::size_t{60} * 8000 * 2;

    // Creates the file, which must not exist yet.
    [[nodiscard]] static Outcome<std::shared_ptr<CallRecording>> create(CallSnapshot call, std::string path);

    void onFrame(sip::AudioFrame const& heard, sip::AudioFrame const& sent) override;
    // Frames are ignored from now on. Any thread.
    void finish() { finished_ = true; }
    bool isFinished() const { return finished_; }

    // Writes the queued frames. False when the recording has finished, or has failed as outcome() says. The recorder's
    // thread.
    bool write();
    // Closes the file with a correct header. The recorder's thread.
    void close() { file_.reset(); }
    // Closes and removes the file of a recording that never started.
    void discard();
    // The reason for which the recording ended before its call.
    Outcome<> const& outcome() const { return outcome_; }

    CallSnapshot const& call() const { return call_; }
    std::string const& path() const { return path_; }

private:
    struct FileCloser
    {
        void operator()(sf_private_tag* file) const;
    };

    using File = std::unique_ptr<sf_private_tag, FileCloser>;

    CallRecording(CallSnapshot call, std::string path, File file);

    CallSnapshot const call_;
    std::string const path_;
    File file_;
    std::mutex mutex_;
    std::vector<std::int16_t> queued_;  // interleaved
    bool overrun_ = false;
    Outcome<> outcome_;  // the recorder's thread
    std::atomic<bool> finished_{false};
};

}  // namespace telephone
