#include "telephone/access/Words.h"

#include <gtest/gtest.h>

using namespace telephone;

TEST(Words, SplitWords_AtBlanksAndTabs)
{
    EXPECT_EQ(splitWords("  HoldCall \t Line=4711  CallID=1 \r").value(), (Words{"HoldCall", "Line=4711", "CallID=1"}));
}

TEST(Words, SplitWords_QuotesKeepBlanks)
{
    EXPECT_EQ(splitWords(R"(a Name="John Smith" 'b c' "")").value(), (Words{"a", "Name=John Smith", "b c", ""}));
}

TEST(Words, SplitWords_EscapesInDoubleQuotes)
{
    EXPECT_EQ(splitWords(R"("a \"b\" \\ \n")").value(), (Words{R"(a "b" \ \n)"}));
}

TEST(Words, SplitWords_HashAtTheBeginningOfAWord_IsAComment)
{
    EXPECT_EQ(splitWords("press 1 # the first line key").value(), (Words{"press", "1"}));
    EXPECT_EQ(splitWords("# only a comment").value(), Words{});
    EXPECT_EQ(splitWords("wait X LineID=4711#2 Destination=*21#"),
              (Words{"wait", "X", "LineID=4711#2", "Destination=*21#"}));
}

TEST(Words, SplitWords_OpenQuote_IsRefused)
{
    EXPECT_EQ(splitWords("say \"hello").error().reason, "a quote \" is not closed");
}

TEST(Words, SplitWords_OfSingleQuotes_EscapesNothing)
{
    EXPECT_EQ(splitWords(R"('a\'b 'c "d"')").value(), (Words{R"(a\b)", R"(c "d")"}));
    EXPECT_EQ(splitWords(R"("a\)").error().reason, "a quote \" is not closed");
    EXPECT_EQ(splitWords("'a").error().reason, "a quote ' is not closed");
}

TEST(Words, JoinWords_BeginsWithTheFirstThatIsMeant)
{
    EXPECT_EQ(joinWords({"a", "b", "", "c"}, 1), "b  c");
    EXPECT_EQ(joinWords({"a"}, 1), "");
}

TEST(Words, Trimmed_KeepsTheBlanksWithin)
{
    EXPECT_EQ(trimmed(" \t a  b\r\n"), "a  b");
    EXPECT_EQ(trimmed("a"), "a");
    EXPECT_EQ(trimmed(" \t\r\n"), "");
    EXPECT_EQ(trimmed(""), "");
}

TEST(Words, QuotedWords_AreSplitIntoTheSameWords)
{
    EXPECT_EQ(quoteWords({"call", "4711", "from", "555", "name", "Ann B"}), "call 4711 from 555 name \"Ann B\"");
    Words const words{"say", "", "a\tb", R"(5" \ 'x')", "#1", "Line=4711#2"};
    EXPECT_EQ(splitWords(quoteWords(words)), words);
}

TEST(Words, SplitAssignment_AtTheFirstSign)
{
    auto const assignment = splitAssignment("Destination=sip:100@x;a=b");

    ASSERT_TRUE(assignment);
    EXPECT_EQ(assignment->name, "Destination");
    EXPECT_EQ(assignment->value, "sip:100@x;a=b");
    EXPECT_FALSE(splitAssignment("Destination"));
    EXPECT_FALSE(splitAssignment("=100"));
}

TEST(Words, SecondsOf_TakesWholeAndPartsAndAUnit)
{
    EXPECT_EQ(secondsOf("5"), 5.0);
    EXPECT_EQ(secondsOf("0.5"), 0.5);
    EXPECT_EQ(secondsOf("2s"), 2.0);
    EXPECT_EQ(secondsOf("250ms"), 0.25);
}

TEST(Words, SecondsOf_AnythingElse_IsRefused)
{
    for (char const* const word : {"", "x", "-1", "1e9", "nan", "inf", "5 m", "5min"}) {
        EXPECT_FALSE(secondsOf(word)) << word;
    }
}

TEST(Words, SecondsOf_AreADayAtMost)
{
    EXPECT_EQ(secondsOf("0"), 0.0);
    EXPECT_EQ(secondsOf("86400"), 86400.0);
    EXPECT_EQ(secondsOf("86400000ms"), 86400.0);
    EXPECT_EQ(secondsOf("86400.001").error().reason, "\"86400.001\" is not a number of seconds from 0 to 86400");
    EXPECT_EQ(secondsOf("86400001ms").error().reason, "\"86400001ms\" is not a number of seconds from 0 to 86400");
    EXPECT_FALSE(secondsOf("-0.001"));
}

TEST(Words, DurationOf_IsRounded)
{
    EXPECT_EQ(durationOf("0.0014"), std::chrono::milliseconds(1));
    EXPECT_EQ(durationOf("0.0016"), std::chrono::milliseconds(2));
}

TEST(Words, DurationOf_IsInMilliseconds)
{
    EXPECT_EQ(durationOf("1.5"), std::chrono::milliseconds(1500));
    EXPECT_EQ(durationOf("20ms"), std::chrono::milliseconds(20));
    EXPECT_FALSE(durationOf("20 ms"));
}

TEST(Words, NumberOf_IsInItsRange)
{
    EXPECT_EQ(numberOf("2", 2, 100), 2U);
    EXPECT_EQ(numberOf("100", 2, 100), 100U);
    for (char const* const word : {"", "1", "101", "-2", "2.5", "2x", "99999999999999999999"}) {
        EXPECT_EQ(numberOf(word, 2, 100).error().reason, "\"" + std::string(word) + "\" is not a number from 2 to 100");
    }
}
