#include "telephone/exchange/Appearances.h"

#include <gtest/gtest.h>

namespace telephone::exchange {
namespace {

class AppearancesTest : public ::testing::Test
{
protected:
    static sip::DialogEntry reportOf(std::string const& callId, sip::DialogState state, int appearance = 0)
    {
        sip::DialogEntry entry;
        entry.dialog.callId = callId;
        entry.state = state;
        entry.appearance = appearance;
        return entry;
    }

    std::vector<sip::DialogEntry> reported_;
    Appearances appearances_{[](std::string const& number) { return number == "4711" ? 2 : 0; },
                             [this](std::string const&) { return reported_; }};
};

TEST_F(AppearancesTest, EachOwner_TakesTheFirstFreeOne)
{
    EXPECT_EQ(appearances_.take("4711", "a"), 1);
    EXPECT_EQ(appearances_.take("4711", "b"), 2);
    EXPECT_EQ(appearances_.take("4711", "a"), 1) << "has one already";

    auto const third = appearances_.take("4711", "c");

    ASSERT_FALSE(third);
    EXPECT_EQ(third.error(), (Refusal{RefusalKind::kLimit, "4711 has no free appearance"}));
    appearances_.release("4711", "a");
    EXPECT_EQ(appearances_.take("4711", "c"), 1);
}

TEST_F(AppearancesTest, WantedOne_IsTakenOrRefused)
{
    EXPECT_EQ(appearances_.take("4711", "a", 2), 2);

    auto const taken = appearances_.take("4711", "b", 2);
    auto const missing = appearances_.take("4711", "b", 3);

    ASSERT_FALSE(taken);
    EXPECT_EQ(taken.error().reason, "appearance 2 of 4711 is not free");
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().reason, "4711 has no free appearance");
    EXPECT_EQ(appearances_.take("4711", "b"), 1);
}

TEST_F(AppearancesTest, NumberThatIsNotShared_AlwaysHasOne)
{
    for (char const* const owner : {"a", "b", "c"}) {
        EXPECT_EQ(appearances_.take("100", owner), 0);
    }
}

TEST_F(AppearancesTest, ReportedCall_CountsOnce)
{
    EXPECT_EQ(appearances_.take("4711", "a"), 1);
    reported_ = {reportOf("a", sip::DialogState::kTrying)};
    appearances_.noteReport("4711");

    EXPECT_EQ(appearances_.take("4711", "b"), 2);
    EXPECT_FALSE(appearances_.take("4711", "c"));
}

TEST_F(AppearancesTest, CallThatIsReportedAsOver_GivesItsAppearanceBack)
{
    EXPECT_EQ(appearances_.take("4711", "a"), 1);
    EXPECT_EQ(appearances_.take("4711", "b"), 2);
    reported_ = {reportOf("a", sip::DialogState::kTerminated)};

    appearances_.noteReport("4711");

    EXPECT_EQ(appearances_.take("4711", "c"), 1);
}

TEST_F(AppearancesTest, ReportedAppearance_IsTheOneThatIsTaken)
{
    reported_ = {reportOf("a", sip::DialogState::kConfirmed, 1)};
    EXPECT_EQ(appearances_.take("4711", "b"), 2);

    reported_ = {reportOf("a", sip::DialogState::kConfirmed, 2)};
    appearances_.release("4711", "b");
    EXPECT_EQ(appearances_.take("4711", "b"), 1);
}

}  // namespace
}  // namespace telephone::exchange
