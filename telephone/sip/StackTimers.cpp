#include "telephone/sip/StackTimers.h"

#include <atomic>
#include <chrono>

#include "telephone/sip/Stack.h"
#include "telephone/time/SteadyClock.h"

// The stack's timers, the first to expire at the head. The stack exports the function without declaring it.
extern "C" list* tmrl_get(void);

namespace telephone::sip {

namespace {

std::atomic<unsigned> acceleration{1};

std::uint64_t expiryOf(le const* element)
{
    return static_cast<tmr const*>(element->data)->jfs;
}

// Inserts a timer behind those that expire no later, searching from both ends at once: a transaction's timer of 32
// seconds (RFC 3261, timers B, F and J) belongs near the tail, a retransmission's of half a second near the head, with
// thousands of the former between them.
void insert(list& timers, tmr& timer)
{
    le* back = timers.tail;
    for (le* front = timers.head; front; front = front->next, back = back->prev) {
        if (expiryOf(front) > timer.jfs) {
            list_insert_before(&timers, front, &timer.le, &timer);
            return;
        }
        if (expiryOf(back) <= timer.jfs) {
            list_insert_after(&timers, back, &timer.le, &timer);
            return;
        }
    }
    list_append(&timers, &timer.le, &timer);
}

}  // namespace

std::uint64_t firstExpiry()
{
    le const* const first = list_head(tmrl_get());
    return first ? expiryOf(first) : kNoTimer;
}

void expireTimers()
{
    tmr_poll(tmrl_get());
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
        list_unlink(&timer.le);
    }
    timer.th = handler;
    timer.arg = argument;
    if (!handler) {
        return;
    }
    timer.jfs = stackMilliseconds() + delay / acceleration;
    insert(*tmrl_get(), timer);
}

}  // namespace telephone::sip
