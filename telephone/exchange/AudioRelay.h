// Carries the received audio of one call to another. The queue compensates for the different clocks of the two ends.
#pragma once

#include "telephone/media/FrameQueue.h"

namespace telephone::exchange {

class AudioRelay final : public sip::AudioSource, public sip::AudioSink
{
public:
    bool readFrame(sip::AudioFrame& frame) override { return frames_.pop(frame); }
    void skipFrames(std::uint64_t count) override { frames_.drop(count); }
    void writeFrame(sip::AudioFrame const& frame) override { frames_.push(frame); }

private:
    FrameQueue frames_;
};

}  // namespace telephone::exchange
