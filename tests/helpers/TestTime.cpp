#include "TestTime.h"

#include <cstdlib>
#include <string>

#include "telephone/time/SteadyClock.h"
#include "telephone/time/Waiting.h"

namespace telephone::test {

bool isTimeOfTestsVirtual()
{
    char const* const time = std::getenv("TELEPHONE_TIME");
    return time == nullptr || std::string(time) != "real";
}

std::uint64_t seedOfTests()
{
    char const* const seed = std::getenv("TELEPHONE_SEED");
    return seed == nullptr ? 0 : std::stoull(seed);
}

bool eventually(std::function<bool()> const& condition, std::chrono::milliseconds deadline)
{
    auto const end = SteadyClock::now() + deadline;
    while (!condition()) {
        if (SteadyClock::now() >= end) {
            return false;
        }
        sleepFor(std::chrono::milliseconds(2));
    }
    return true;
}

}  // namespace telephone::test
