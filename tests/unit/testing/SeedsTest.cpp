#include "telephone/testing/Seeds.h"

#include <gtest/gtest.h>

using namespace telephone;

namespace {

std::string refusalOf(std::string const& text)
{
    auto const seeds = Seeds::parse(text);
    return seeds ? "accepted as " + seeds->text() : seeds.error().reason;
}

}  // namespace

TEST(Seeds, Range_IsReadWithBothEnds)
{
    auto const seeds = Seeds::parse("1-1000");

    ASSERT_TRUE(seeds);
    EXPECT_EQ(seeds->first, 1U);
    EXPECT_EQ(seeds->last, 1000U);
    EXPECT_EQ(seeds->text(), "1-1000");
}

TEST(Seeds, SingleSeed_IsBothEnds)
{
    auto const seeds = Seeds::parse("17");

    ASSERT_TRUE(seeds);
    EXPECT_EQ(seeds->first, 17U);
    EXPECT_EQ(seeds->last, 17U);
    EXPECT_EQ(seeds->text(), "17");
}

TEST(Seeds, LargestSeed_IsRead)
{
    auto const seeds = Seeds::parse("18446744073709551615");

    ASSERT_TRUE(seeds);
    EXPECT_EQ(seeds->last, 18446744073709551615U);
}

TEST(Seeds, AnythingElse_IsRefused)
{
    EXPECT_EQ(refusalOf(""), "\"\" is not a range of seeds, such as 1-1000");
    EXPECT_EQ(refusalOf("-"), "\"-\" is not a range of seeds, such as 1-1000");
    EXPECT_EQ(refusalOf("1-"), "\"1-\" is not a range of seeds, such as 1-1000");
    EXPECT_EQ(refusalOf("-5"), "\"-5\" is not a range of seeds, such as 1-1000");
    EXPECT_EQ(refusalOf("1-2-3"), "\"1-2-3\" is not a range of seeds, such as 1-1000");
    EXPECT_EQ(refusalOf("one"), "\"one\" is not a range of seeds, such as 1-1000");
    EXPECT_EQ(refusalOf("18446744073709551616"), "\"18446744073709551616\" is not a range of seeds, such as 1-1000");
}

TEST(Seeds, RangeThatRunsBackwards_IsRefused)
{
    EXPECT_EQ(refusalOf("9-3"), "the range of seeds 9-3 runs backwards");
}

TEST(Seeds, MoreThanAMillion_AreRefused)
{
    EXPECT_EQ(refusalOf("1-1000000"), "accepted as 1-1000000");
    EXPECT_EQ(refusalOf("0-1000000"), "0-1000000 is more than 1000000 seeds");
}
