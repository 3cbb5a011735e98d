// Carries what one call hears to another. The frames wait a little, so that two clocks that are not in step do not
// matter.
#pragma once

#include <deque>

#include "telephone/sip/Audio.h"

namespace telephone::exchange {

class AudioRelay final : public sip::AudioSource, public sip::AudioSink
{
public:
    bool readFrame(sip::AudioFrame& frame) override
    {
        if (frames_.empty()) {
            return false;
        }
        frame = frames_.front();
        frames_.pop_front();
        return true;
    }

    void writeFrame(sip::AudioFrame const& frame) override
    {
        constexpr std::size_t kMostWaiting = 5;
        if (frames_.size() >= kMostWaiting) {
            frames_.pop_front();
        }
        frames_.push_back(frame);
    }

private:
    std::deque<sip::AudioFrame> frames_;
};

}  // namespace telephone::exchange
