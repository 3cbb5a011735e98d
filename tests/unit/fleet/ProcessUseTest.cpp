#include "telephone/fleet/ProcessUse.h"

#include <cstring>
#include <memory>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

using namespace telephone;

TEST(ProcessUse, OfThisProcess_GrowsWithWhatItTakes)
{
    constexpr std::size_t kTaken = 32 * 1024 * 1024;
    ProcessUse const before = useOf(getpid());
    auto const memory = std::make_unique<char[]>(kTaken);
    rusage spent{};
    // A tenth of a second of processor time.
    while (spent.ru_utime.tv_sec == 0 && spent.ru_utime.tv_usec < 100'000) {
        std::memset(memory.get(), 1, kTaken);
        getrusage(RUSAGE_SELF, &spent);
    }

    ProcessUse const after = useOf(getpid());

    EXPECT_GE(after.memory, before.memory + kTaken);
    EXPECT_GE(after.processor.count(), 90);
}

TEST(ProcessUse, OfNoProcess_IsZero)
{
    ProcessUse const use = useOf(0);

    EXPECT_EQ(use.memory, 0U);
    EXPECT_EQ(use.processor.count(), 0);
}
