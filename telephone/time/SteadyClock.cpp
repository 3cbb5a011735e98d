#include "telephone/time/SteadyClock.h"

#include "telephone/time/Conductor.h"
#include "telephone/time/VirtualTime.h"

namespace telephone {

SteadyClock::time_point SteadyClock::now()
{
    return isVirtual() ? conductor().now() : std::chrono::steady_clock::now();
}

std::chrono::system_clock::time_point wallTime()
{
    return isVirtual() ? conductor().wallTime() : std::chrono::system_clock::now();
}

std::tm utcCalendar(std::chrono::system_clock::time_point time)
{
    std::time_t const seconds = std::chrono::system_clock::to_time_t(time);
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    return parts;
}

std::tm localCalendar(std::chrono::system_clock::time_point time)
{
    if (isVirtual()) {
        return utcCalendar(time);
    }
    std::time_t const seconds = std::chrono::system_clock::to_time_t(time);
    std::tm parts{};
    localtime_r(&seconds, &parts);
    return parts;
}

}  // namespace telephone
