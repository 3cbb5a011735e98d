// The clock of the audio: one timer of the loop that calls every running stream every 20 ms. The beat after a late one
// comes earlier, so that the average is right; after a long interruption the clock starts anew. One per user agent.
// Used under the lock; calls on the loop's thread.
//
// In virtual time a clock rests while no stream needs its beats. Whoever changes what a stream hears, sends or is heard
// by calls `catchUp` before: the beats that were left out are then made up for at once.
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
    // False: so many beats may as well be made up for later, with the same result.
    [[nodiscard]] virtual bool needsBeats() const = 0;
    virtual void makeUpFor(std::uint64_t beats) = 0;
};

class MediaClock
{
public:
    explicit MediaClock(EventLoop& loop);
    ~MediaClock();
    MediaClock(MediaClock const&) = delete;
    MediaClock& operator=(MediaClock const&) = delete;

    void add(MediaClockListener& listener);
    void remove(MediaClockListener& listener);

    // Makes up for the beats left out until now, by every clock of the process: two ends of a call may have two. They
    // do not rest before their next beat.
    static void catchUp();

private:
    void beat();
    void schedule();
    void wait();
    void wake();
    [[nodiscard]] bool mayRest() const;

    Timer timer_;
    EventLoop& loop_;
    std::vector<MediaClockListener*> listeners_;
    std::uint64_t next_ = 0;  // milliseconds of the stack's clock
    bool rests_ = false;
};

}  // namespace telephone::sip
