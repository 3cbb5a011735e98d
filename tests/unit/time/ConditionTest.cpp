#include "telephone/time/Condition.h"

#include <optional>

#include <gtest/gtest.h>

#include "telephone/time/Gate.h"
#include "telephone/time/Thread.h"
#include "telephone/time/Waiting.h"

namespace telephone {
namespace {

using namespace std::chrono_literals;

// Each in real and in virtual time.
class ConditionTest : public testing::TestWithParam<bool>
{
protected:
    std::optional<VirtualTime> time_ =
        GetParam() ? std::optional<VirtualTime>(std::in_place, VirtualTime::Settings{}) : std::nullopt;
    std::mutex mutex_;
    Condition changed_{"the test"};
    bool isSet_ = false;

    void set()
    {
        {
            std::lock_guard const lock(mutex_);
            isSet_ = true;
        }
        changed_.notifyAll();
    }
};

INSTANTIATE_TEST_SUITE_P(Times, ConditionTest, testing::Values(false, true),
                         [](auto const& time) { return time.param ? "Virtual" : "Real"; });

TEST_P(ConditionTest, Wait_EndsOnceTheConditionHolds)
{
    Thread setter("setter", [this] { set(); });
    {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return isSet_; });
        EXPECT_TRUE(isSet_);
        EXPECT_TRUE(lock.owns_lock());
    }
    setter.join();
}

TEST_P(ConditionTest, WaitUntil_TellsThatTheDeadlineCameFirst)
{
    auto const deadline = SteadyClock::now() + 5ms;
    std::unique_lock lock(mutex_);

    EXPECT_FALSE(changed_.waitUntil(lock, deadline, [this] { return isSet_; }));

    EXPECT_GE(SteadyClock::now(), deadline);
}

TEST_P(ConditionTest, WaitFor_TellsThatTheConditionHolds)
{
    Thread setter("setter", [this] {
        sleepFor(1ms);
        set();
    });
    {
        std::unique_lock lock(mutex_);
        EXPECT_TRUE(changed_.waitFor(lock, 10s, [this] { return isSet_; }));
    }
    setter.join();
}

TEST_P(ConditionTest, Gate_StaysOpen)
{
    Gate gate("the test");

    EXPECT_FALSE(gate.waitFor(1ms));
    gate.open();
    EXPECT_TRUE(gate.waitFor(0ms));
    EXPECT_TRUE(gate.waitFor(0ms));
}

TEST(VirtualConditionTest, Timeout_TakesExactlyItsTime)
{
    VirtualTime const time({});
    std::mutex mutex;
    std::unique_lock lock(mutex);
    auto const start = SteadyClock::now();

    Condition("the test").waitFor(lock, 24h, [] { return false; });

    EXPECT_EQ(SteadyClock::now() - start, 24h);
}

}  // namespace
}  // namespace telephone
