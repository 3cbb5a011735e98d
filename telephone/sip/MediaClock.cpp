#include "telephone/sip/MediaClock.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "telephone/sip/Audio.h"
#include "telephone/sip/EventLoop.h"
#include "telephone/sip/Stack.h"
#include "telephone/time/VirtualTime.h"

namespace telephone::sip {

namespace {

constexpr std::uint64_t kPeriod = kFrameTime.count();
constexpr std::uint64_t kLongestLag = 200;

// Of the process, for `catchUp`. Used under the lock.
std::vector<MediaClock*>& clocks()
{
    static auto& all = *new std::vector<MediaClock*>;  // never destroyed, as the network
    return all;
}

}  // namespace

MediaClock::MediaClock(EventLoop& loop)
    : timer_(loop)
    , loop_(loop)
{
    std::lock_guard const lock(loop_);
    clocks().push_back(this);
}

MediaClock::~MediaClock()
{
    std::lock_guard const lock(loop_);
    std::erase(clocks(), this);
}

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
    wait();
}

void MediaClock::wait()
{
    std::uint64_t const now = tmr_jiffies();
    std::uint64_t const left = next_ > now ? next_ - now : 0;
    timer_.start(std::chrono::milliseconds(left), [this] { beat(); });
}

void MediaClock::beat()
{
    for (std::size_t i = 0; i < listeners_.size(); ++i) {
        if (listeners_[i]) {
            listeners_[i]->onBeat();
        }
    }
    std::erase(listeners_, nullptr);
    if (listeners_.empty()) {
        return;
    }
    schedule();
    if (isVirtual() && mayRest()) {
        timer_.cancel();
        rests_ = true;
    }
}

bool MediaClock::mayRest() const
{
    return std::none_of(listeners_.begin(), listeners_.end(),
                        [](MediaClockListener const* each) { return each->needsBeats(); });
}

void MediaClock::catchUp()
{
    for (MediaClock* const each : clocks()) {
        each->wake();
    }
}

void MediaClock::wake()
{
    if (!std::exchange(rests_, false)) {
        return;
    }
    std::uint64_t const now = tmr_jiffies();
    std::uint64_t const beats = next_ > now ? 0 : (now - next_) / kPeriod + 1;
    for (MediaClockListener* const each : listeners_) {
        if (each != nullptr && beats > 0) {
            each->makeUpFor(beats);
        }
    }
    next_ += beats * kPeriod;
    wait();
}

}  // namespace telephone::sip
