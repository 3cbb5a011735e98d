// The stack's timers, in the place of its own (StackFunctions.cpp): with a clock that is never set, and no slower when
// there are many. Used under the loop's lock.
#pragma once

#include <cstdint>
#include <limits>

struct tmr;

namespace telephone::sip {

constexpr std::uint64_t kNoTimer = std::numeric_limits<std::uint64_t>::max();

// The expiry of the first timer in milliseconds of the stack's clock, or kNoTimer.
std::uint64_t firstExpiry();

// The same from now on, as the stack wants it: at least 1, and 0 if there is no timer.
std::uint64_t untilFirstExpiry();

// The stack's clock. Its own is the wall clock: setting it back by an hour would delay every timer by an hour.
std::uint64_t stackMilliseconds();

// Starts a timer, or starts it anew; without a handler it stops. `delay` is in milliseconds.
void startTimer(tmr& timer, std::uint64_t delay, void (*handler)(void*), void* argument);

// Calls the handlers of the timers that have expired.
void expireTimers();

// For tests, which need not wait half a minute for a transaction to end: divides the delays of all timers that are
// started from now on. 1: the real time.
void accelerateTimers(unsigned factor);

}  // namespace telephone::sip
