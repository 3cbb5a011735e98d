#include <array>
#include <atomic>
#include <thread>
#include <vector>

#include "SipFixture.h"
#include "telephone/sip/Timer.h"

namespace telephone::test {

TEST_F(SipTest, SecondLoop_IsRefused)
{
    EXPECT_THROW(sip::EventLoop(), std::runtime_error);
}

TEST_F(SipTest, PostedWork_RunsInOrderOnTheLoopWithTheLock)
{
    std::vector<int> order;
    std::atomic<bool> onLoop{false};
    std::atomic<bool> done{false};

    loop.post([&] { order.push_back(1); });
    loop.post([&] {
        order.push_back(2);
        onLoop = loop.isLoopThread() && loop.isLockedByCaller();
        done = true;
    });

    auto const deadline = std::chrono::steady_clock::now() + kDeadline;
    while (!done && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    EXPECT_TRUE(onLoop);
    EXPECT_EQ((std::vector<int>{1, 2}), order);
}

TEST_F(SipTest, Lock_IsRecursiveAndKeepsTheLoopOut)
{
    std::atomic<bool> ran{false};

    {
        std::lock_guard outer(loop);
        std::lock_guard inner(loop);
        loop.post([&ran] { ran = true; });
        std::thread([this] { EXPECT_FALSE(loop.try_lock()); }).join();
        EXPECT_TRUE(loop.isLockedByCaller());
        EXPECT_FALSE(ran);
    }

    EXPECT_FALSE(loop.isLockedByCaller());
    auto const deadline = std::chrono::steady_clock::now() + kDeadline;
    while (!ran && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    EXPECT_TRUE(ran);
}

TEST_F(SipTest, Timers_ExpireInTheOrderOfTheirTimesAndOfTheirStart)
{
    constexpr int kCount = 300;
    constexpr std::array kDelays{40ms, 0ms, 20ms, 5ms, 20ms, 60ms, 1ms};
    std::vector<int> expired;
    std::vector<sip::Timer> timers;
    std::unique_lock lock(loop);
    for (int i = 0; i < kCount; ++i) {
        timers.emplace_back(loop, kDelays[static_cast<std::size_t>(i) % kDelays.size()],
                            [&expired, i] { expired.push_back(i); });
    }
    timers.at(17).cancel();
    lock.unlock();

    auto const deadline = std::chrono::steady_clock::now() + kDeadline;
    auto const count = [&] {
        const std::lock_guard guard(loop);
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

TEST_F(SipTest, TimerStartedOnAnotherThread_WakesTheLoop)
{
    std::atomic<bool> expired{false};
    auto const begun = std::chrono::steady_clock::now();

    sip::Timer timer(loop, 30ms, [&expired] { expired = true; });

    while (!expired && std::chrono::steady_clock::now() < begun + kDeadline) {
        std::this_thread::yield();
    }
    EXPECT_TRUE(expired);
    EXPECT_GE(std::chrono::steady_clock::now() - begun, 25ms);
    EXPECT_FALSE(timer.isRunning());
}

TEST_F(SipTest, CancelledTimer_DoesNotExpire)
{
    std::atomic<bool> expired{false};
    std::atomic<bool> later{false};
    {
        sip::Timer dropped(loop, 10ms, [&expired] { expired = true; });
        sip::Timer cancelled(loop, 10ms, [&expired] { expired = true; });
        cancelled.cancel();
    }

    sip::Timer after(loop, 40ms, [&later] { later = true; });

    auto const deadline = std::chrono::steady_clock::now() + kDeadline;
    while (!later && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    EXPECT_TRUE(later);
    EXPECT_FALSE(expired);
}

TEST_F(SipTest, TimerThatDestroysItself_IsFine)
{
    std::atomic<bool> expired{false};
    auto timer = std::make_unique<sip::Timer>(loop);
    timer->start(1ms, [&] {
        timer.reset();
        expired = true;
    });

    auto const deadline = std::chrono::steady_clock::now() + kDeadline;
    while (!expired && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    EXPECT_TRUE(expired);
}

TEST(EventLoop, CanBeMadeAgain)
{
    for (int i = 0; i < 3; ++i) {
        sip::EventLoop loop;
        loop.start();
        loop.start();
        loop.stop();
        loop.stop();
    }
}

TEST_F(SipTest, PortInUse_IsRefusedWithTheReason)
{
    TestPhone phone(loop);
    sip::UserAgentConfig config;
    config.udpPort = phone.agent->udpPort();

    try {
        TestPhone second(loop, "4712", config);
        FAIL() << "the port is bound twice";
    } catch (std::runtime_error const& error) {
        EXPECT_EQ("UDP port " + std::to_string(config.udpPort) + " of 127.0.0.1: Address already in use",
                  std::string(error.what()));
    }
}

TEST_F(SipTest, AddressThatIsNone_IsRefused)
{
    sip::UserAgentConfig config;
    config.address = "here";
    EXPECT_THROW(TestPhone(loop, "1", config), std::runtime_error);
    config.address = "0.0.0.0";
    EXPECT_THROW(TestPhone(loop, "1", config), std::runtime_error);
}

}  // namespace telephone::test
