// The recording of one call: takes the frames of both directions from the call and writes them to a stereo WAV file,
// left what was heard, right what was sent, 8 kHz, 16 bit.
//
// Frames arrive on the loop's thread under the phone lock and are only queued there; the recorder's thread writes.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "telephone/calls/AudioTap.h"
#include "telephone/calls/CallSnapshot.h"

struct sf_private_tag;

namespace telephone {

class CallRecording : public AudioTap
{
public:
    // So much waits to be written at most, of a disk that does not keep up; more ends the recording.
    static constexpr std::size_t kMostQueuedSamples = std::size_t{60} * 8000 * 2;

    // Makes the file; throws std::runtime_error with the reason when it can't be made.
    CallRecording(CallSnapshot call, std::string path);
    ~CallRecording() override;
    CallRecording(CallRecording const&) = delete;
    CallRecording& operator=(CallRecording const&) = delete;

    void onFrame(sip::AudioFrame const& heard, sip::AudioFrame const& sent) override;
    // No frame comes any more. Any thread.
    void finish() { finished_ = true; }
    bool isFinished() const { return finished_; }

    // Writes what is queued. False when there is nothing more to come: finished, or failed for the reason of `failure`.
    // The recorder's thread.
    bool write();
    // Closes the file, whose header is then right. The recorder's thread.
    void close();
    // Nothing was recorded: closes and removes the file.
    void discard();
    std::string const& failure() const { return failure_; }

    CallSnapshot const& call() const { return call_; }
    std::string const& path() const { return path_; }

private:
    struct FileCloser
    {
        void operator()(sf_private_tag* file) const;
    };

    CallSnapshot const call_;
    std::string const path_;
    std::unique_ptr<sf_private_tag, FileCloser> file_;
    std::mutex mutex_;
    std::vector<std::int16_t> queued_;  // interleaved
    bool overrun_ = false;
    std::string failure_;
    std::atomic<bool> finished_{false};
};

}  // namespace telephone
