#include "telephone/base/Names.h"

#include <gtest/gtest.h>

namespace telephone {
namespace {

std::vector<std::string_view> const kNames{"HoldCall", "RetrieveCall", "TransferCall"};

TEST(Names, EqualIgnoringCase_ComparesWholeNames)
{
    EXPECT_TRUE(equalIgnoringCase("holdcall", "HoldCall"));
    EXPECT_FALSE(equalIgnoringCase("Hold", "HoldCall"));
    EXPECT_FALSE(equalIgnoringCase("HoldCalls", "HoldCall"));
}

TEST(Names, NamesOf_KeepsTheOrderOfTheRows)
{
    struct Row
    {
        std::string_view name;
    };

    EXPECT_EQ(namesOf(std::vector<Row>{{"b"}, {"a"}}, &Row::name), (std::vector<std::string_view>{"b", "a"}));
}

TEST(Names, NearestName_NeedsTheFewestChanges)
{
    EXPECT_EQ(nearestName("HoldCal", kNames), "HoldCall");
    EXPECT_EQ(nearestName("transfercal", kNames), "TransferCall");
}

TEST(Names, NearestName_CountsABeginningAsOneChange)
{
    EXPECT_EQ(nearestName("Retr", kNames), "RetrieveCall");
}

TEST(Names, NearestName_GivesANameHoweverFar)
{
    EXPECT_EQ(nearestName("", kNames), "HoldCall");
    EXPECT_EQ(nearestName("zzzzzzzzzzzzzzzz", kNames), "HoldCall");
    EXPECT_EQ(nearestName("x", {}), "");
}

TEST(Names, Suggestion_NamesOnlyANameThatIsClose)
{
    EXPECT_EQ(suggestion("HoldCal", kNames), " (did you mean HoldCall?)");
    EXPECT_EQ(suggestion("coffee", kNames), "");
    EXPECT_EQ(suggestion("x", {}), "");
}

TEST(Names, HugeText_IsComparedByItsBeginning)
{
    EXPECT_EQ(suggestion(std::string(1024 * 1024, 'x'), kNames), "");
}

}  // namespace
}  // namespace telephone
