// Frames on their way from who hears them to who mixes them: a short queue that evens out when they come. Guarded by
// its user.
#pragma once

#include <array>
#include <cstddef>

#include "telephone/sip/Audio.h"

namespace telephone {

class FrameQueue
{
public:
    static constexpr std::size_t kCapacity = 5;  // 100 ms; what is older is not worth hearing

    // A full queue loses its oldest frame.
    void push(sip::AudioFrame const& frame);
    // False, and the frame as it was, when there is none.
    bool pop(sip::AudioFrame& frame);
    std::size_t size() const { return size_; }
    void clear() { size_ = 0; }

private:
    std::array<sip::AudioFrame, kCapacity> frames_{};
    std::size_t first_ = 0;
    std::size_t size_ = 0;
};

}  // namespace telephone
