#include "telephone/media/FrameQueue.h"

namespace telephone {

void FrameQueue::push(sip::AudioFrame const& frame)
{
    if (size_ == kCapacity) {
        first_ = (first_ + 1) % kCapacity;
        --size_;
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
    first_ = (first_ + 1) % kCapacity;
    --size_;
    return true;
}

}  // namespace telephone
