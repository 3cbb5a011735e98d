#include "telephone/sip/Timer.h"

#include <array>
#include <atomic>
#include <thread>
#include <vector>

#include "LoopFixture.h"

namespace telephone::sip {

using namespace std::chrono_literals;

using TimerTest = LoopFixture;

TEST_F(TimerTest, Timers_ExpireInTheOrderOfTheirTimesAndOfTheirStart)
{
    constexpr int kCount = 300;
    constexpr std::array kDelays{40ms, 0ms, 20ms, 5ms, 20ms, 60ms, 1ms};
    std::vector<int> expired;
    std::vector<Timer> timers;
    std::unique_lock lock(loop);
    for (int i = 0; i < kCount; ++i) {
        timers.emplace_back(loop, kDelays[static_cast<std::size_t>(i) % kDelays.size()],
                            [&expired, i] { expired.push_back(i); });
    }
    timers.at(17).cancel();
    lock.unlock();

    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    auto const count = [&] {
        std::lock_guard const guard(loop);
        return expired.size();
    };
    while (count() < kCount - 1 && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }

    lock.lock();
    ASSERT_EQ(expired.size(), std::size_t{kCount - 1});
    for (std::size_t later = 1; later < expired.size(); ++later) {
        for (std::size_t earlier = 0; earlier < later; ++earlier) {
            auto const first = static_cast<std::size_t>(expired[earlier]);
            auto const second = static_cast<std::size_t>(expired[later]);
            EXPECT_TRUE(first < second || kDelays[first % kDelays.size()] < kDelays[second % kDelays.size()])
                << "timer " << first << " before timer " << second;
        }
    }
}

TEST_F(TimerTest, TimerStartedOnAnotherThread_WakesTheLoop)
{
    std::atomic<bool> expired{false};
    auto const begun = std::chrono::steady_clock::now();

    Timer timer(loop, 30ms, [&expired] { expired = true; });

    while (!expired && std::chrono::steady_clock::now() < begun + std::chrono::seconds(10)) {
        std::this_thread::yield();
    }
    EXPECT_TRUE(expired);
    EXPECT_GE(std::chrono::steady_clock::now() - begun, 25ms);
    EXPECT_FALSE(timer.isRunning());
}

TEST_F(TimerTest, CancelledTimer_DoesNotExpire)
{
    std::atomic<bool> expired{false};
    std::atomic<bool> later{false};
    {
        Timer dropped(loop, 10ms, [&expired] { expired = true; });
        Timer cancelled(loop, 10ms, [&expired] { expired = true; });
        cancelled.cancel();
    }

    Timer after(loop, 40ms, [&later] { later = true; });

    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!later && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    EXPECT_TRUE(later);
    EXPECT_FALSE(expired);
}

TEST_F(TimerTest, TimerThatDestroysItself_IsFine)
{
    std::atomic<bool> expired{false};
    auto timer = std::make_unique<Timer>(loop);
    timer->start(1ms, [&] {
        timer.reset();
        expired = true;
    });

    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!expired && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    EXPECT_TRUE(expired);
}

}  // namespace telephone::sip
