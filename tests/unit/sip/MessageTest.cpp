#include "telephone/sip/Message.h"

#include <gtest/gtest.h>

namespace telephone::sip {

TEST(ReplacesTest, Parameters_AreReadInAnyOrder)
{
    auto const replaces = Replaces::parse("12@host; from-tag=b ;early-only;to-tag=a");

    ASSERT_TRUE(replaces);
    EXPECT_EQ((Replaces{"12@host", "a", "b", true}), *replaces);
    EXPECT_EQ("12@host;to-tag=a;from-tag=b;early-only", replaces->format());
    EXPECT_FALSE(Replaces::parse(""));
    EXPECT_FALSE(Replaces::parse("12@host;to-tag=a"));
    EXPECT_FALSE(Replaces::parse("12@host;from-tag=a"));
    EXPECT_FALSE(Replaces::parse(";to-tag=a;from-tag=b"));
    EXPECT_FALSE(Replaces::parse("12@host;to-tag;from-tag")) << "without values";
    EXPECT_EQ((Replaces{"12", "a=", "b", false}), Replaces::parse(" 12 ;TO-TAG=a=;From-Tag=b;x=y;"));
}

TEST(HeadersTest, Value_IsTheFirstOfItsNameWhateverTheCase)
{
    Headers const headers{{"Expires", "60"}, {"expires", "70"}, {"Empty", ""}};

    EXPECT_EQ(headers.value("EXPIRES"), "60");
    EXPECT_EQ(headers.values("EXPIRES"), (std::vector<std::string>{"60", "70"}));
    EXPECT_EQ(headers.number("Expires"), 60U);
    EXPECT_EQ(headers.number("None"), 0U);
    EXPECT_TRUE(headers.has("EMPTY"));
    EXPECT_FALSE(headers.has("None"));
    EXPECT_TRUE(headers.lists("expires", "70"));
    EXPECT_FALSE(headers.lists("expires", "7"));
}

TEST(HeadersTest, LineBreaksInAValue_DoNotMakeAnotherHeader)
{
    EXPECT_EQ("Reason: a  Via: b\r\n", (Headers{{"Reason", "a\r\nVia: b"}}.format()));
}

TEST(HeadersTest, ListOfAHeader_JoinsAllItsOccurrences)
{
    Headers const headers{{"Require", "a, b"}, {"Via", "x, y"}, {"require", "\"c, d\" <sip:e,f@g>"}};

    EXPECT_EQ(headers.list("REQUIRE"), (std::vector<std::string>{"a", "b", "\"c, d\" <sip:e,f@g>"}));
    EXPECT_TRUE(headers.list("Supported").empty());
}

TEST(DialogIdTest, Replaces_NamesTheDialogAsTheFarEndSeesIt)
{
    DialogId const here{"call", "mine", "theirs"};
    DialogId const there{"call", "theirs", "mine"};

    EXPECT_EQ(here.replaces(), (Replaces{"call", "theirs", "mine", false}));
    EXPECT_TRUE(there.matches(here.replaces()));
    EXPECT_FALSE(here.matches(here.replaces()));
}

}  // namespace telephone::sip
