// The telephone's clocks. In virtual time both stand still until a driver waits (see VirtualTime.h). Any thread.
#pragma once

#include <chrono>
#include <ctime>

namespace telephone {

// For durations and deadlines: never set back. Meets the standard's requirements of a clock.
struct SteadyClock
{
    using duration = std::chrono::steady_clock::duration;
    using rep = duration::rep;
    using period = duration::period;
    using time_point = std::chrono::steady_clock::time_point;
    static constexpr bool is_steady = true;

    static time_point now();
};

// A deadline that never comes.
constexpr SteadyClock::time_point kNoDeadline = SteadyClock::time_point::max();

// The time of day.
std::chrono::system_clock::time_point wallTime();

// Date and time of day in UTC, and in the local zone; in virtual time both in UTC.
std::tm utcCalendar(std::chrono::system_clock::time_point time);
std::tm localCalendar(std::chrono::system_clock::time_point time);

}  // namespace telephone
