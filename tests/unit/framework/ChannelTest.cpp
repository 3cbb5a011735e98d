#include "telephone/framework/Channel.h"

#include <gtest/gtest.h>

#include "platform/framework/FrameworkContext.h"

using telephone::Channel;

TEST(Channel, Take_GivesEventsInOrderNumberedFromOne)
{
    FrameworkContext context;
    Channel channel("console", context, 10, {});
    channel.sendEvent("a");
    channel.sendEvent("b");

    auto const events = channel.take(10);

    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0].number, 1U);
    EXPECT_EQ(events[0].text, "a");
    EXPECT_EQ(events[1].number, 2U);
    EXPECT_EQ(events[1].text, "b");
}

TEST(Channel, SendEvent_IntoAFullQueue_DropsTheOldestAndLeavesAGap)
{
    FrameworkContext context;
    Channel channel("console", context, 2, {});
    channel.sendEvent("a");
    channel.sendEvent("b");
    channel.sendEvent("c");

    auto const events = channel.take(10);

    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0].number, 2U);
    EXPECT_EQ(events[1].number, 3U);
    EXPECT_EQ(channel.dropped(), 1U);
}

TEST(Channel, SendEvent_WakesOnlyWhenItWasEmpty)
{
    int woken = 0;
    FrameworkContext context;
    Channel channel("console", context, 10, [&] { ++woken; });

    channel.sendEvent("a");
    channel.sendEvent("b");
    EXPECT_EQ(woken, 1);
    channel.take(2);
    channel.sendEvent("c");
    EXPECT_EQ(woken, 2);
}

TEST(Channel, Take_AtMost_LeavesTheRest)
{
    FrameworkContext context;
    Channel channel("console", context, 10, {});
    channel.sendEvent("a");
    channel.sendEvent("b");

    EXPECT_EQ(channel.take(1).size(), 1U);
    EXPECT_EQ(channel.take(10).size(), 1U);
}

TEST(Channel, WithoutRoom_KeepsTheLatestEvent)
{
    FrameworkContext context;
    Channel channel("console", context, 0, {});
    channel.sendEvent("a");
    channel.sendEvent("b");

    auto const events = channel.take(10);

    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].text, "b");
    EXPECT_EQ(channel.dropped(), 1U);
    EXPECT_EQ(&channel.context(), &context);
}
