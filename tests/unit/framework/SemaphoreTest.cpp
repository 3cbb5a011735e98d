#include "platform/framework/Semaphore.h"

#include <thread>

#include <gtest/gtest.h>

#include "telephone/framework/HeldSemaphores.h"

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

TEST(Semaphore, Initial_IsBetweenZeroAndTheMaximum)
{
    Semaphore tooMany(3, 2, false);
    EXPECT_TRUE(tooMany.take(0));
    EXPECT_TRUE(tooMany.take(0));
    EXPECT_FALSE(tooMany.take(0));

    Semaphore tooFew(-1, 2, false);
    EXPECT_FALSE(tooFew.take(0));
    tooFew.give();
    EXPECT_TRUE(tooFew.take(0));
}

TEST(Semaphore, Maximum_IsAtLeastOne)
{
    Semaphore semaphore(1, 0, false);

    EXPECT_TRUE(semaphore.take(0));
    EXPECT_FALSE(semaphore.take(0));
    semaphore.give();
    EXPECT_TRUE(semaphore.take(0));
}

TEST(Semaphore, WithoutATimeLimit_WaitsUntilItIsGiven)
{
    Semaphore semaphore(0, 1, false);
    Semaphore waiting(0, 1, false);
    std::thread giver([&] {
        waiting.take(Semaphore::kNoTimeLimit);
        semaphore.give();
    });

    waiting.give();

    EXPECT_TRUE(semaphore.take(Semaphore::kNoTimeLimit));
    giver.join();
}

TEST(Semaphore, HeldOnes_AreThoseTakenAndNotGivenBack)
{
    int const before = telephone::heldSemaphores();
    Semaphore semaphore(1, 1, false);
    semaphore.give();
    EXPECT_EQ(telephone::heldSemaphores(), before) << "it was free";

    semaphore.take(0);
    semaphore.take(0);
    EXPECT_EQ(telephone::heldSemaphores(), before + 1);

    semaphore.give();
    EXPECT_EQ(telephone::heldSemaphores(), before);
}
