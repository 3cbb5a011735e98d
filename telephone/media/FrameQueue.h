// A short queue of frames that compensates for jitter between a receiver and its reader. Guarded by its user.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "telephone/sip/Audio.h"

namespace telephone {

class FrameQueue
{
public:
    static constexpr std::size_t kCapacity = 5;  // 100 ms; older frames are dropped

    // A full queue loses its oldest frame.
    void push(sip::AudioFrame const& frame);
    // False if the queue is empty; the frame is unchanged then.
    bool pop(sip::AudioFrame& frame);
    // Loses so many of the oldest frames, or all.
    void drop(std::uint64_t count);
    std::size_t size() const { return size_; }
    void clear() { size_ = 0; }

private:
    std::array<sip::AudioFrame, kCapacity> frames_{};
    std::size_t first_ = 0;
    std::size_t size_ = 0;
};

}  // namespace telephone
