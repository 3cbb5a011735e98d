// The writer of events and answers: the room it allocates before it writes.
#include "src/Elements.h"

#include <limits>

#include <gtest/gtest.h>

namespace {

using elements::element;
using elements::join;

TEST(Elements, RoomOfATextElement_IsItsLength)
{
    EXPECT_EQ(element("LineID", std::string_view("4711")).room(), std::string_view("<LineID>4711</LineID>").size());
    EXPECT_EQ(element("URI", std::string_view()).room(), std::string_view("<URI></URI>").size());
}

TEST(Elements, RoomOfANumber_IsThatOfTheLongest)
{
    std::string_view const longest = "<CallID>-2147483648</CallID>";

    EXPECT_EQ(element("CallID", 1).room(), longest.size());
    EXPECT_EQ(join(element("CallID", std::numeric_limits<int>::min())), longest);
    EXPECT_EQ(element("Count", 1U).room(), std::string_view("<Count>-4294967295</Count>").size());
    EXPECT_EQ(join(element("Count", std::numeric_limits<unsigned int>::max())), "<Count>4294967295</Count>");
}

TEST(Elements, RoomOfAFlag_IsItsLength)
{
    EXPECT_EQ(element("Mute", true).room(), std::string_view("<Mute>1</Mute>").size());
}

}  // namespace
