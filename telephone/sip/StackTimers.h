// The stack's timers as this telephone runs them: by a clock that nobody sets, and without a walk past the timers of
// all the calls of the last half minute. The stack itself calls these in place of its own.
#pragma once

#include <cstdint>
#include <limits>

namespace telephone::sip {

constexpr std::uint64_t kNoTimer = std::numeric_limits<std::uint64_t>::max();

// When the first timer expires, in milliseconds of the stack's clock; kNoTimer without any. Loop locked.
std::uint64_t firstExpiry();

}  // namespace telephone::sip
