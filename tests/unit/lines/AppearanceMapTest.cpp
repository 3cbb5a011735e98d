// Calls and the appearances they are on.
#include "telephone/lines/AppearanceMap.h"

#include <chrono>

#include <gtest/gtest.h>

#include "telephone/framework/Refusals.h"

namespace telephone {
namespace {

class AppearanceMapTest : public testing::Test
{
protected:
    AppearanceMapTest()
        : map_([this] { return now_; })
    {
        map_.addLine(3, "4713", {129, 130});
        map_.addLine(4, "4714", {131, 132, 133});
    }

    int assign(int line, int callID)
    {
        int appearance = 0;
        map_.assignCallToLine(line, callID, appearance);
        return appearance;
    }

    bool isMapped(int callID) const
    {
        int line = 0;
        int appearance = 0;
        return map_.findVirtualLineforCallID(callID, line, appearance);
    }

    std::chrono::steady_clock::time_point now_{};
    AppearanceMap map_;
};

TEST_F(AppearanceMapTest, Assignment_WritesBackTheAppearanceOfTheVirtualLine)
{
    EXPECT_EQ(assign(132, 7), 2);

    int line = 0;
    int appearance = 0;
    ASSERT_TRUE(map_.findVirtualLineforCallID(7, line, appearance));
    EXPECT_EQ(line, 132);
    EXPECT_EQ(appearance, 2);
}

TEST_F(AppearanceMapTest, Assignment_ToTheLineItself_TakesItsFirstFreeAppearance)
{
    assign(129, 1);
    EXPECT_EQ(assign(3, 2), 2);
}

TEST_F(AppearanceMapTest, Assignment_ToAnUnknownVirtualLine_ChangesNothing)
{
    EXPECT_EQ(assign(0, 1), 0);
    EXPECT_EQ(assign(1, 1), 0);

    int line = 5;
    int appearance = 6;
    EXPECT_FALSE(map_.findVirtualLineforCallID(1, line, appearance));
    EXPECT_EQ(line, 5);
    EXPECT_EQ(appearance, 6);
}

TEST_F(AppearanceMapTest, FirstFree_SkipsAppearancesWithCalls_AndIsZeroWhenAllAreTaken)
{
    EXPECT_EQ(map_.findFirstFreeVirtualLine(3), 129);
    assign(129, 1);
    EXPECT_EQ(map_.findFirstFreeVirtualLine(3), 130);
    assign(130, 2);
    EXPECT_EQ(map_.findFirstFreeVirtualLine(3), 0);
    EXPECT_EQ(map_.findFirstFreeVirtualLine(1), 0);
}

TEST_F(AppearanceMapTest, AllAppearancesTaken_NamesTheLine)
{
    assign(129, 1);
    assign(130, 2);

    RefusalCollector collector;
    EXPECT_EQ(map_.findFirstFreeVirtualLine(3), 0);
    EXPECT_EQ(collector.take(),
              (std::vector<Refusal>{{RefusalKind::kLimit, "all appearances of line 4713 are taken"}}));
}

TEST_F(AppearanceMapTest, UnknownCall_GivesItsAppearanceBack_ButACallThatHasBegunKeepsIt)
{
    assign(129, 1);
    assign(130, 2);
    map_.callBegan(2, 130);

    map_.callUnknown(1);
    map_.callUnknown(2);
    map_.callUnknown(3);

    EXPECT_EQ(map_.findFirstFreeVirtualLine(3), 129);
    EXPECT_FALSE(isMapped(1));
    EXPECT_TRUE(isMapped(2));
}

TEST_F(AppearanceMapTest, UnknownCall_ConcernsNoOther)
{
    assign(129, 1);

    map_.callUnknown(2);
    EXPECT_TRUE(isMapped(1));

    map_.callUnknown(1);
    EXPECT_FALSE(isMapped(1));
}

TEST_F(AppearanceMapTest, AppearanceIsFree_WhenItsCallHasEnded)
{
    assign(129, 1);
    map_.callBegan(1, 129);
    map_.callEnded(1);

    EXPECT_EQ(map_.findFirstFreeVirtualLine(3), 129);
    EXPECT_FALSE(isMapped(1));
}

TEST_F(AppearanceMapTest, MappingWithoutACall_ExpiresAfterTenSeconds)
{
    assign(129, 1);
    now_ += std::chrono::seconds(9);
    EXPECT_EQ(map_.findFirstFreeVirtualLine(3), 130);
    now_ += std::chrono::seconds(1);
    EXPECT_EQ(map_.findFirstFreeVirtualLine(3), 129);
    EXPECT_FALSE(isMapped(1));
}

TEST_F(AppearanceMapTest, MappingOfACall_StaysUntilTheCallEnds)
{
    assign(129, 1);
    map_.callBegan(1, 129);
    now_ += std::chrono::hours(10);

    EXPECT_EQ(map_.findFirstFreeVirtualLine(3), 130);
}

TEST_F(AppearanceMapTest, ReservedAppearance_IsFirstForOutgoingCallsAndClosedToIncomingOnes)
{
    map_.reserve(132);

    EXPECT_EQ(map_.findFirstFreeVirtualLine(4), 132);
    EXPECT_EQ(map_.seizeForIncoming(4, 1001), 131);
    EXPECT_EQ(map_.seizeForIncoming(4, 1002), 133);
    EXPECT_EQ(map_.seizeForIncoming(4, 1003), 0);
}

TEST_F(AppearanceMapTest, Reservation_EndsWhenItsCallBegins)
{
    map_.reserve(132);
    map_.callBegan(5, 132);
    map_.reserve(132);  // taken: not reserved

    map_.callEnded(5);
    EXPECT_EQ(map_.findFirstFreeVirtualLine(4), 131);
    map_.reserve(132);
    EXPECT_EQ(map_.findFirstFreeVirtualLine(4), 132);
}

TEST_F(AppearanceMapTest, Reservation_ThatIsTakenBack_IsOpenToIncomingCallsAgain)
{
    map_.reserve(131);
    map_.reserve(7);  // no appearance
    EXPECT_EQ(map_.seizeForIncoming(4, 1001), 132);

    map_.unreserve(131);

    EXPECT_EQ(map_.seizeForIncoming(4, 1002), 131);
    EXPECT_EQ(map_.seizeForIncoming(7, 1003), 0);
}

TEST_F(AppearanceMapTest, ReservedAppearance_ThatIsTakenElsewhere_IsPassedOver)
{
    map_.reserve(132);
    map_.setElsewhere(132, true);

    EXPECT_EQ(map_.findFirstFreeVirtualLine(4), 131);
}

TEST_F(AppearanceMapTest, CallOfALineWithoutAppearances_IsNotMapped)
{
    map_.callBegan(5, 1);

    EXPECT_FALSE(isMapped(5));
}

// An assignment is made anew when its call is made again.
TEST_F(AppearanceMapTest, RepeatedAssignment_CountsFromTheLatest)
{
    assign(131, 1);
    now_ += std::chrono::seconds(9);
    assign(132, 1);
    now_ += std::chrono::seconds(9);

    EXPECT_TRUE(isMapped(1));
    EXPECT_EQ(map_.findFirstFreeVirtualLine(4), 131);
    now_ += std::chrono::milliseconds(999);
    EXPECT_TRUE(isMapped(1));
    now_ += std::chrono::milliseconds(1);
    EXPECT_FALSE(isMapped(1));
}

TEST_F(AppearanceMapTest, IncomingCall_KeepsItsAppearanceHoweverLongItRings)
{
    ASSERT_EQ(map_.seizeForIncoming(4, 1001), 131);
    now_ += std::chrono::minutes(1);

    EXPECT_EQ(map_.seizeForIncoming(4, 1002), 132);
    map_.callUnknown(1001);
    EXPECT_TRUE(isMapped(1001));
}

TEST_F(AppearanceMapTest, TenThousandCalls_LeaveNothingBehind)
{
    for (int callID = 1; callID <= 10000; ++callID) {
        ASSERT_EQ(map_.seizeForIncoming(4, callID), 131);
        map_.callBegan(callID, 131);
        map_.callEnded(callID);
        ASSERT_FALSE(isMapped(callID));
    }
    EXPECT_EQ(map_.findFirstFreeVirtualLine(4), 131);
}

TEST(AppearanceMapElsewhere, AppearanceOfAnotherTelephone_IsNotFree)
{
    AppearanceMap map;
    map.addLine(1, "4711", {11, 12});

    map.setElsewhere(11, true);
    EXPECT_EQ(map.findFirstFreeVirtualLine(1), 12);
    EXPECT_EQ(map.seizeForIncoming(1, 5), 12);
    EXPECT_EQ(map.findFirstFreeVirtualLine(1), 0);

    map.setElsewhere(11, false);
    EXPECT_EQ(map.findFirstFreeVirtualLine(1), 11);
}

}  // namespace
}  // namespace telephone
