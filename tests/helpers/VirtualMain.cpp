// The main of tests with everything in one process: they run in virtual time. Tests that talk to other programs have
// the main of the test framework, and so run in real time.
#include <optional>

#include <gtest/gtest.h>

#include "TestTime.h"
#include "telephone/time/VirtualTime.h"

int main(int count, char** arguments)
{
    ::testing::InitGoogleTest(&count, arguments);
    std::optional<telephone::VirtualTime> time;
    if (telephone::test::isTimeOfTestsVirtual()) {
        time.emplace(telephone::VirtualTime::Settings{.seed = telephone::test::seedOfTests()});
    }
    return RUN_ALL_TESTS();
}
