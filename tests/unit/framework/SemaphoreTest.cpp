#include "platform/framework/Semaphore.h"

#include <thread>

#include <gtest/gtest.h>

TEST(Semaphore, Take_WhileFree_Succeeds)
{
    Semaphore semaphore(1, 1, false);

    EXPECT_TRUE(semaphore.take(Semaphore::kNoTimeLimit));
    EXPECT_FALSE(semaphore.take(0));
}

TEST(Semaphore, Give_MakesItFreeAgain)
{
    Semaphore semaphore(1, 1, true);
    semaphore.take(Semaphore::kNoTimeLimit);

    semaphore.give();

    EXPECT_TRUE(semaphore.take(0));
}

TEST(Semaphore, Give_BeyondTheMaximum_StaysAtTheMaximum)
{
    Semaphore semaphore(1, 2, false);
    semaphore.give();
    semaphore.give();

    EXPECT_TRUE(semaphore.take(0));
    EXPECT_TRUE(semaphore.take(0));
    EXPECT_FALSE(semaphore.take(0));
}

TEST(Semaphore, Take_WithTimeLimit_EndsWhenTheTimeIsOver)
{
    Semaphore semaphore(0, 1, false);

    EXPECT_FALSE(semaphore.take(1));
}

TEST(Semaphore, TwoThreads_NeverHoldItAtOnce)
{
    Semaphore semaphore(1, 1, false);
    int shared = 0;
    auto const count = [&] {
        for (int i = 0; i < 10000; ++i) {
            semaphore.take(Semaphore::kNoTimeLimit);
            ++shared;
            semaphore.give();
        }
    };
    std::thread first(count);
    std::thread second(count);
    first.join();
    second.join();

    EXPECT_EQ(shared, 20000);
}
