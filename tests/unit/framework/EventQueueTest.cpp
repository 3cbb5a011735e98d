#include "telephone/framework/EventQueue.h"

#include <gtest/gtest.h>

using telephone::EventQueue;

TEST(EventQueue, Take_GivesEventsInOrderNumberedFromOne)
{
    EventQueue queue(10, {});
    queue.put("a");
    queue.put("b");

    auto const events = queue.take(10);

    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0].number, 1U);
    EXPECT_EQ(events[0].text, "a");
    EXPECT_EQ(events[1].number, 2U);
    EXPECT_EQ(events[1].text, "b");
}

TEST(EventQueue, Put_IntoAFullQueue_DropsTheOldestAndLeavesAGap)
{
    EventQueue queue(2, {});
    queue.put("a");
    queue.put("b");
    queue.put("c");

    auto const events = queue.take(10);

    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0].number, 2U);
    EXPECT_EQ(events[1].number, 3U);
    EXPECT_EQ(queue.dropped(), 1U);
}

TEST(EventQueue, Put_WakesOnlyWhenItWasEmpty)
{
    int woken = 0;
    EventQueue queue(10, [&] { ++woken; });

    queue.put("a");
    queue.put("b");
    EXPECT_EQ(woken, 1);
    queue.take(2);
    queue.put("c");
    EXPECT_EQ(woken, 2);
}

TEST(EventQueue, Take_AtMost_LeavesTheRest)
{
    EventQueue queue(10, {});
    queue.put("a");
    queue.put("b");

    EXPECT_EQ(queue.take(1).size(), 1U);
    EXPECT_EQ(queue.take(10).size(), 1U);
}
