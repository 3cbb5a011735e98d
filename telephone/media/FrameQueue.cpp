#include "telephone/media/FrameQueue.h"

#include <algorithm>

namespace telephone {

void FrameQueue::push(sip::AudioFrame const& frame)
{
    if (size_ == kCapacity) {
        drop(1);
    }
    frames_[(first_ + size_) % kCapacity] = frame;
    ++size_;
}

bool FrameQueue::pop(sip::AudioFrame& frame)
{
    if (size_ == 0) {
        return false;
    }
    frame = frames_[first_];
    drop(1);
    return true;
}

void FrameQueue::drop(std::uint64_t count)
{
    auto const dropped = static_cast<std::size_t>(std::min<std::uint64_t>(count, size_));
    first_ = (first_ + dropped) % kCapacity;
    size_ -= dropped;
}

}  // namespace telephone
