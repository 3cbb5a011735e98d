#include "telephone/sip/RequestLimits.h"

#include <gtest/gtest.h>

#include "telephone/time/VirtualTime.h"
#include "telephone/time/Waiting.h"

namespace telephone::sip {

namespace {

class RequestLimitsTest : public ::testing::Test
{
protected:
    static RequestLimits::Source source(std::uint8_t number) { return {number, 1}; }
    int taken(std::uint8_t number, int tries, bool trusted = false)
    {
        int count = 0;
        for (int i = 0; i < tries; ++i) {
            count += limits.takeFrom(source(number), trusted) ? 1 : 0;
        }
        return count;
    }

    VirtualTime const time{{}};
    RequestLimits limits{{10, 3, 2}};
};

}  // namespace

TEST_F(RequestLimitsTest, Source_HasABurstOfTwoSecondsAndThenItsRate)
{
    EXPECT_EQ(taken(1, 1000), 20);
    sleepFor(std::chrono::seconds(1));
    EXPECT_EQ(taken(1, 1000), 10);
    sleepFor(std::chrono::seconds(60));
    EXPECT_EQ(taken(1, 1000), 20);
}

TEST_F(RequestLimitsTest, OtherSource_IsNotAffectedAndATrustedOneHasTenTimesAsMany)
{
    EXPECT_EQ(taken(1, 1000), 20);
    EXPECT_EQ(taken(2, 1000), 20);
    EXPECT_EQ(taken(1, 1000, true), 200);
}

TEST_F(RequestLimitsTest, ThousandsOfSources_ShareWhatIsLeft)
{
    int count = 0;
    for (int i = 0; i < 100000; ++i) {
        auto const low = static_cast<std::uint8_t>(i % 256);
        auto const high = static_cast<std::uint8_t>(i / 256 % 256);
        count += limits.takeFrom({low, high, static_cast<std::uint8_t>(i / 65536), 7}, false) ? 1 : 0;
    }
    EXPECT_EQ(count, 1000 + 20);
}

TEST_F(RequestLimitsTest, SourcesThatHaveBeenQuietForTwoSeconds_MakeRoomForOthers)
{
    auto const fill = [this] {
        for (int i = 0; i < 1000; ++i) {
            (void)limits.takeFrom({static_cast<std::uint8_t>(i % 256), static_cast<std::uint8_t>(i / 256), 7, 7},
                                  false);
        }
    };
    fill();
    sleepFor(std::chrono::milliseconds(1'999));
    EXPECT_EQ(taken(1, 1000), 20);
    EXPECT_EQ(taken(2, 1000), 0) << "it shares what is left";

    // They are looked through once a second.
    sleepFor(std::chrono::milliseconds(999));
    EXPECT_EQ(taken(3, 1000), 9);
    sleepFor(std::chrono::milliseconds(1));
    EXPECT_EQ(taken(4, 1000), 20);
    EXPECT_EQ(taken(5, 1000), 20);
}

TEST_F(RequestLimitsTest, Transactions_AreCountedFor32Seconds)
{
    EXPECT_TRUE(limits.remember());
    EXPECT_TRUE(limits.remember());
    EXPECT_TRUE(limits.remember());
    EXPECT_FALSE(limits.remember());
    sleepFor(std::chrono::seconds(32));
    EXPECT_FALSE(limits.remember());
    sleepFor(std::chrono::milliseconds(1));
    EXPECT_TRUE(limits.remember());
}

TEST_F(RequestLimitsTest, Subscriptions_AreCountedByTheirOwner)
{
    EXPECT_TRUE(limits.hasRoomForSubscription(1));
    EXPECT_FALSE(limits.hasRoomForSubscription(2));
}

TEST_F(RequestLimitsTest, ZeroIsNoLimit)
{
    RequestLimits none({});
    for (int i = 0; i < 10000; ++i) {
        ASSERT_TRUE(none.takeFrom(source(1), false));
        ASSERT_TRUE(none.remember());
    }
    EXPECT_TRUE(none.hasRoomForSubscription(1000000));
}

}  // namespace telephone::sip
