#include "telephone/framework/TimerService.h"

#include <future>
#include <set>

#include <gtest/gtest.h>

#include "FrameworkDoubles.h"

using telephone::TimerService;
using namespace std::chrono_literals;

namespace {

constexpr auto kDeadline = 10s;

class Target : public ExecutableDouble
{
public:
    void timerEvent(int timerId) override { expired.set_value(timerId); }

    std::promise<int> expired;
};

}  // namespace

TEST(TimerService, Start_TellsTheTargetItsId)
{
    TimerService timers;
    Target target;
    timers.deliverTo(&target);

    int const id = timers.start(1ms);

    auto expired = target.expired.get_future();
    ASSERT_EQ(expired.wait_for(kDeadline), std::future_status::ready);
    EXPECT_EQ(expired.get(), id);
    timers.stop();
}

TEST(TimerService, Start_IdsAreNeverZeroAndDiffer)
{
    TimerService timers;
    std::set<int> ids;
    for (int i = 0; i < 100; ++i) {
        ids.insert(timers.start(1h));
    }

    EXPECT_EQ(ids.size(), 100U);
    EXPECT_EQ(ids.count(0), 0U);
}

TEST(TimerService, Start_WithAction_RunsItAndNotTheTarget)
{
    TimerService timers;
    Target target;
    timers.deliverTo(&target);
    std::promise<void> ran;

    timers.start(0ms, [&] { ran.set_value(); });

    ASSERT_EQ(ran.get_future().wait_for(kDeadline), std::future_status::ready);
    timers.stop();
    EXPECT_EQ(target.expired.get_future().wait_for(0s), std::future_status::timeout);
}

TEST(TimerService, Start_ShorterTimer_ExpiresBeforeALongerStartedEarlier)
{
    TimerService timers;
    std::string order;
    std::promise<void> done;
    timers.start(60ms, [&] {
        order += "long";
        done.set_value();
    });
    timers.start(1ms, [&] { order += "short "; });

    ASSERT_EQ(done.get_future().wait_for(kDeadline), std::future_status::ready);
    timers.stop();
    EXPECT_EQ(order, "short long");
}

TEST(TimerService, Start_SameInstant_KeepsTheOrderOfStarting)
{
    TimerService timers;
    std::string order;
    std::promise<void> release;
    std::promise<void> done;
    // The first holds the thread until the others are all due.
    timers.start(0ms, [&] { release.get_future().wait(); });
    for (char const letter : std::string("abc")) {
        timers.start(0ms, [&order, letter] { order += letter; });
    }
    timers.start(0ms, [&] { done.set_value(); });
    release.set_value();

    ASSERT_EQ(done.get_future().wait_for(kDeadline), std::future_status::ready);
    timers.stop();
    EXPECT_EQ(order, "abc");
}

TEST(TimerService, Cancel_BeforeExpiry_IsTrueAndTheTimerNeverExpires)
{
    TimerService timers;
    bool ran = false;
    int const id = timers.start(1h, [&] { ran = true; });

    EXPECT_TRUE(timers.cancel(id));
    EXPECT_FALSE(timers.cancel(id));
    timers.stop();
    EXPECT_FALSE(ran);
}

TEST(TimerService, Cancel_LeavesTheOtherTimers)
{
    TimerService timers;
    std::promise<void> ran;
    int const id = timers.start(1h, [] {});
    timers.start(20ms, [&] { ran.set_value(); });

    EXPECT_TRUE(timers.cancel(id));

    EXPECT_EQ(ran.get_future().wait_for(kDeadline), std::future_status::ready);
}

TEST(TimerService, StoppedService_StartsNoTimer)
{
    TimerService timers;
    int const waiting = timers.start(1h, [] {});

    timers.stop();

    EXPECT_FALSE(timers.cancel(waiting));
    EXPECT_FALSE(timers.cancel(timers.start(1h, [] {})));
}

TEST(TimerService, TimerWithoutATarget_ExpiresUnheard)
{
    TimerService timers;
    std::promise<void> ran;
    timers.start(0ms);
    timers.start(0ms, [&] { ran.set_value(); });

    EXPECT_EQ(ran.get_future().wait_for(kDeadline), std::future_status::ready);
}

TEST(TimerService, Action_ThatThrows_DoesNotStopTheOthers)
{
    TimerService timers;
    std::promise<void> ran;
    timers.start(0ms, [] { throw std::runtime_error("a failing action"); });
    timers.start(1ms, [&] { ran.set_value(); });

    EXPECT_EQ(ran.get_future().wait_for(kDeadline), std::future_status::ready);
    timers.stop();
}

TEST(TimerService, DeliverToNobody_WaitsForTheExpiryUnderWay)
{
    class SlowTarget : public ExecutableDouble
    {
    public:
        void timerEvent(int) override
        {
            entered.set_value();
            leave.get_future().wait();
            left = true;
        }
        std::promise<void> entered;
        std::promise<void> leave;
        std::atomic<bool> left{false};
    };
    TimerService timers;
    SlowTarget target;
    timers.deliverTo(&target);
    timers.start(0ms);
    target.entered.get_future().wait();

    auto taken = std::async(std::launch::async, [&] {
        timers.deliverTo(nullptr);
        return target.left.load();
    });
    target.leave.set_value();

    EXPECT_TRUE(taken.get());
}
