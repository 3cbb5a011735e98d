#include "telephone/sip/EventLoop.h"

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

#include "LoopFixture.h"

namespace telephone::sip {

using namespace std::chrono_literals;

using EventLoopTest = LoopFixture;

TEST_F(EventLoopTest, SecondLoop_IsRefused)
{
    EXPECT_THROW(EventLoop(), std::runtime_error);
}

TEST_F(EventLoopTest, PostedWork_RunsInOrderOnTheLoopWithTheLock)
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

    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!done && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    EXPECT_TRUE(onLoop);
    EXPECT_EQ((std::vector<int>{1, 2}), order);
}

TEST_F(EventLoopTest, Lock_IsRecursiveAndKeepsTheLoopOut)
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
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!ran && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    EXPECT_TRUE(ran);
}

TEST(EventLoopLifeTest, Loop_CanBeMadeAgain)
{
    for (int i = 0; i < 3; ++i) {
        EventLoop loop;
        loop.start();
        loop.start();
        loop.stop();
        loop.stop();
    }
}

}  // namespace telephone::sip
