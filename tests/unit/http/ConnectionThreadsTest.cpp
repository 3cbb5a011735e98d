// The threads of connections: as many as are needed at the same time.
#include "telephone/http/ConnectionThreads.h"

#include <atomic>
#include <latch>
#include <semaphore>
#include <set>

#include <gtest/gtest.h>

using namespace telephone;

namespace {

class ConnectionThreadsTest : public testing::Test
{
protected:
    ~ConnectionThreadsTest() override
    {
        if (!isOver_) {
            threads_.shutdown();
        }
    }
    void end()
    {
        isOver_ = true;
        threads_.shutdown();
    }
    // Runs a connection to its end; on which thread.
    std::thread::id runOne()
    {
        std::latch done(1);
        std::thread::id id;
        threads_.enqueue([&] {
            id = std::this_thread::get_id();
            done.count_down();
        });
        done.wait();
        return id;
    }

    static constexpr std::size_t kMost = 3;

    std::atomic<int> cuts_{0};
    ConnectionThreads threads_{kMost, [this] { ++cuts_; }};
    bool isOver_ = false;
};

TEST_F(ConnectionThreadsTest, Connections_OneAfterTheOther_NeedFewThreads)
{
    std::set<std::thread::id> used;
    for (int i = 0; i < 100; ++i) {
        used.insert(runOne());
    }

    EXPECT_LE(used.size(), kMost);
}

TEST_F(ConnectionThreadsTest, Connections_AtTheSameTime_HaveAThreadEach)
{
    std::latch all(kMost);
    std::latch ended(kMost);
    for (std::size_t i = 0; i < kMost; ++i) {
        threads_.enqueue([&] {
            all.arrive_and_wait();  // returns only if all run at once
            ended.count_down();
        });
    }

    ended.wait();
}

TEST_F(ConnectionThreadsTest, MoreConnectionsThanThreads_WaitForOneToEnd)
{
    std::counting_semaphore<> go(0);
    std::latch began(kMost);
    std::latch ended(kMost + 1);
    std::atomic<std::size_t> running{0};
    std::atomic<std::size_t> mostRunning{0};
    for (std::size_t i = 0; i < kMost + 1; ++i) {
        threads_.enqueue([&, isFirst = i < kMost] {
            std::size_t const now = ++running;
            mostRunning = std::max(mostRunning.load(), now);
            if (isFirst) {
                began.count_down();
                go.acquire();
            }
            --running;
            ended.count_down();
        });
    }
    began.wait();
    EXPECT_FALSE(ended.try_wait());

    go.release(kMost);
    ended.wait();

    EXPECT_EQ(mostRunning, kMost);
}

TEST_F(ConnectionThreadsTest, Shutdown_CutsWhatDoesNotEndAndWaitsForIt)
{
    std::latch began(1);
    std::atomic<bool> hasEnded{false};
    threads_.enqueue([&] {
        began.count_down();
        while (cuts_ == 0) {
            std::this_thread::yield();
        }
        hasEnded = true;
    });
    began.wait();

    end();

    EXPECT_TRUE(hasEnded);
    EXPECT_EQ(cuts_, 1);
}

}  // namespace
