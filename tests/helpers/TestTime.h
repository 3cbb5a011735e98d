// The time of a test program: virtual, so that nothing waits and each run is the same, unless the environment variable
// TELEPHONE_TIME is "real". TELEPHONE_SEED draws another order of threads and messages than the plain one, 0. Any
// thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

namespace telephone::test {

bool isTimeOfTestsVirtual();
std::uint64_t seedOfTests();

// Waits for a condition that another thread makes true; false after the deadline.
bool eventually(std::function<bool()> const& condition, std::chrono::milliseconds deadline = std::chrono::seconds(8));

}  // namespace telephone::test
