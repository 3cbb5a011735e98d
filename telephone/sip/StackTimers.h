// Replacements for the stack's timer functions, which the stack itself calls: they use a clock that is never set, and
// insert a timer without passing the timers of all calls of the last half minute.
#pragma once

#include <cstdint>
#include <limits>

namespace telephone::sip {

constexpr std::uint64_t kNoTimer = std::numeric_limits<std::uint64_t>::max();

// The expiry of the first timer in milliseconds of the stack's clock, or kNoTimer. Call it under the lock.
std::uint64_t firstExpiry();

// Calls the handlers of the timers that have expired. For a loop of our own, which holds the lock.
void expireTimers();

// For tests, which need not wait half a minute for a transaction to end: divides the delays of all timers that are
// started from now on. 1: the real time.
void accelerateTimers(unsigned factor);

}  // namespace telephone::sip
