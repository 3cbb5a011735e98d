#include "telephone/framework/WorkQueue.h"

#include <atomic>
#include <future>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

namespace telephone {
namespace {

TEST(WorkQueueTest, Work_IsDoneInOrder)
{
    WorkQueue queue("the tests");
    std::vector<int> done;

    for (int i = 1; i <= 3; ++i) {
        EXPECT_TRUE(queue.post([&done, i] { done.push_back(i); }));
    }
    queue.flush();

    EXPECT_EQ(done, (std::vector<int>{1, 2, 3}));
}

TEST(WorkQueueTest, FullQueue_RefusesMoreWork)
{
    std::promise<void> begun;
    std::promise<void> end;
    WorkQueue queue("the tests", 1);
    EXPECT_TRUE(queue.post([&] {
        begun.set_value();
        end.get_future().wait();
    }));
    begun.get_future().wait();
    EXPECT_TRUE(queue.post([] {}));

    auto const refused = queue.post([] {});

    end.set_value();
    EXPECT_EQ(refused.error(), (Refusal{RefusalKind::kLimit, "the tests are too far behind to take more work"}));
}

TEST(WorkQueueTest, StoppedQueue_RefusesWork)
{
    WorkQueue queue("the tests");

    queue.stop();

    EXPECT_EQ(queue.post([] {}).error(),
              (Refusal{RefusalKind::kUnavailable, "the tests have stopped because the telephone is ending"}));
}

TEST(WorkQueueTest, WorkThatWaitsAtTheStop_IsNotDone)
{
    std::promise<void> begun;
    std::promise<void> end;
    bool done = false;
    WorkQueue queue("the tests");
    EXPECT_TRUE(queue.post([&] {
        begun.set_value();
        end.get_future().wait();
        queue.stop();  // from within
    }));
    EXPECT_TRUE(queue.post([&] { done = true; }));
    begun.get_future().wait();

    end.set_value();
    queue.stop();

    EXPECT_FALSE(done);
    queue.flush();
}

TEST(WorkQueueTest, WorkThatThrows_DoesNotEndTheQueue)
{
    WorkQueue queue("the tests");
    std::atomic<bool> done{false};
    EXPECT_TRUE(queue.post([] { throw std::runtime_error("not today"); }));

    EXPECT_TRUE(queue.post([&done] { done = true; }));
    queue.flush();

    EXPECT_TRUE(done);
}

}  // namespace
}  // namespace telephone
