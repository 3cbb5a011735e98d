#include "telephone/sip/StackTimers.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <map>

#include "telephone/sip/Stack.h"
#include "telephone/time/SteadyClock.h"

namespace telephone::sip {

namespace {

std::atomic<unsigned> acceleration{1};

// By expiry, those of one millisecond in the order in which they were started. The stack's own list would be passed for
// each timer: a call leaves timers of half a second, five seconds and half a minute, thousands in a busy minute.
using Timers = std::multimap<std::uint64_t, tmr*>;

// Never destroyed: objects of the stack stop their timers when they end.
Timers& timers()
{
    static auto& all = *new Timers;
    return all;
}

void stop(tmr const& timer)
{
    auto const [begin, end] = timers().equal_range(timer.jfs);
    timers().erase(std::find_if(begin, end, [&timer](auto const& entry) { return entry.second == &timer; }));
}

}  // namespace

std::uint64_t firstExpiry()
{
    return timers().empty() ? kNoTimer : timers().begin()->first;
}

std::uint64_t untilFirstExpiry()
{
    std::uint64_t const first = firstExpiry();
    std::uint64_t const now = stackMilliseconds();
    if (first == kNoTimer) {
        return 0;
    }
    return first > now ? first - now : 1;
}

void expireTimers()
{
    std::uint64_t const now = stackMilliseconds();
    while (firstExpiry() <= now) {
        tmr& timer = *timers().begin()->second;
        timers().erase(timers().begin());
        auto* const handler = timer.th;
        timer.th = nullptr;  // the handler may start it again, or end its owner
        handler(timer.arg);
    }
}

void accelerateTimers(unsigned factor)
{
    acceleration = factor;
}

std::uint64_t stackMilliseconds()
{
    using namespace std::chrono;
    return static_cast<std::uint64_t>(duration_cast<milliseconds>(SteadyClock::now().time_since_epoch()).count());
}

void startTimer(tmr& timer, std::uint64_t delay, void (*handler)(void*), void* argument)
{
    if (timer.th) {
        stop(timer);
    }
    timer.th = handler;
    timer.arg = argument;
    if (!handler) {
        return;
    }
    timer.jfs = stackMilliseconds() + delay / acceleration;
    timers().emplace(timer.jfs, &timer);
}

}  // namespace telephone::sip
