// The clock of the audio: one timer of the loop that calls every running stream every 20 ms. The beat after a late one
// comes earlier, so that the average is right; after a long interruption the clock starts anew. One per user agent.
// Used under the lock; calls on the loop's thread.
#pragma once

#include <cstdint>
#include <vector>

#include "telephone/sip/Timer.h"

namespace telephone::sip {

class EventLoop;

class MediaClockListener
{
public:
    virtual ~MediaClockListener() = default;
    virtual void onBeat() = 0;
};

class MediaClock
{
public:
    explicit MediaClock(EventLoop& loop)
        : timer_(loop)
    {}

    void add(MediaClockListener& listener);
    void remove(MediaClockListener& listener);

private:
    void beat();
    void schedule();

    Timer timer_;
    std::vector<MediaClockListener*> listeners_;
    std::uint64_t next_ = 0;  // milliseconds of the stack's clock
};

}  // namespace telephone::sip
