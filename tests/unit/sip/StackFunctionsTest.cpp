#include "telephone/sip/StackFunctions.h"

#include <array>
#include <string>

#include <gtest/gtest.h>

#include "telephone/sip/StackTimers.h"
#include "telephone/time/VirtualTime.h"

namespace telephone::sip {
namespace {

TEST(StackFunctionsTest, EveryFunctionOfTheList_IsReplaced)
{
    EXPECT_NO_THROW(checkStackFunctions());
}

// The stack's rand_u16 and rand_u32 are in one source file.
TEST(StackFunctionsTest, CallWithinASourceFileOfTheStack_ReachesTheReplacement)
{
    auto const numberOfSeed = [](std::uint64_t seed) {
        VirtualTime const time({.seed = seed});
        return rand_u16();
    };

    EXPECT_EQ(numberOfSeed(7), numberOfSeed(7));
    EXPECT_NE(numberOfSeed(7), numberOfSeed(8));
}

TEST(StackFunctionsTest, RandomTexts_ComeFromTheSeed)
{
    auto const textOfSeed = [](std::uint64_t seed) {
        VirtualTime const time({.seed = seed});
        std::array<char, 9> text{};
        rand_str(text.data(), text.size());
        return std::string(text.data());
    };

    EXPECT_EQ(textOfSeed(7).size(), 8U);
    EXPECT_EQ(textOfSeed(7), textOfSeed(7));
    EXPECT_NE(textOfSeed(7), textOfSeed(8));
}

TEST(StackFunctionsTest, Original_CanStillBeCalled)
{
    VirtualTime const time({.seed = 7});

    std::array<std::uint8_t, 16> one{};
    std::array<std::uint8_t, 16> other{};
    stack_rand_bytes(one.data(), one.size());
    stack_rand_bytes(other.data(), other.size());

    EXPECT_NE(one, other);
    EXPECT_EQ(tmr_jiffies(), stackMilliseconds());
    EXPECT_GT(stack_tmr_jiffies(), tmr_jiffies());  // it counts from 1970
}

}  // namespace
}  // namespace telephone::sip
