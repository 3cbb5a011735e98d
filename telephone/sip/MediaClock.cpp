#include "telephone/sip/MediaClock.h"

#include <algorithm>

#include "telephone/sip/Audio.h"
#include "telephone/sip/Stack.h"

namespace telephone::sip {

namespace {

constexpr std::uint64_t kPeriod = kFrameTime.count();
constexpr std::uint64_t kLongestLag = 200;

}  // namespace

void MediaClock::add(MediaClockListener& listener)
{
    if (std::find(listeners_.begin(), listeners_.end(), &listener) != listeners_.end()) {
        return;
    }
    listeners_.push_back(&listener);
    if (timer_.isRunning()) {
        return;
    }
    next_ = tmr_jiffies();
    schedule();
}

void MediaClock::remove(MediaClockListener& listener)
{
    // Only marked: a listener may remove itself or others during a beat.
    std::replace(listeners_.begin(), listeners_.end(), &listener, static_cast<MediaClockListener*>(nullptr));
}

void MediaClock::schedule()
{
    std::uint64_t const now = tmr_jiffies();
    next_ += kPeriod;
    if (next_ + kLongestLag < now) {
        next_ = now;
    }
    std::uint64_t const wait = next_ > now ? next_ - now : 0;
    timer_.start(std::chrono::milliseconds(wait), [this] { beat(); });
}

void MediaClock::beat()
{
    for (std::size_t i = 0; i < listeners_.size(); ++i) {
        if (listeners_[i]) {
            listeners_[i]->onBeat();
        }
    }
    std::erase(listeners_, nullptr);
    if (!listeners_.empty()) {
        schedule();
    }
}

}  // namespace telephone::sip
