#include "telephone/display/SafeText.h"

#include <gtest/gtest.h>

namespace telephone {
namespace {

TEST(SafeText, OrdinaryText_StaysAsItIs)
{
    EXPECT_EQ(safeText("Zoë Ω 電話 \"😀\" \\"), "Zoë Ω 電話 \"😀\" \\");
}

TEST(SafeText, ControlCharacters_AreWrittenAsBytes)
{
    EXPECT_EQ(safeText(std::string_view("a\x1b[2J\r\n\t\0\x7f", 10)), "a\\x1b[2J\\x0d\\x0a\\x09\\x00\\x7f");
}

TEST(SafeText, ControlCharactersOfEightBits_AreWrittenAsCodes)
{
    EXPECT_EQ(safeText("\xc2\x9b"
                       "2J"),
              "\\u{9b}2J");
}

TEST(SafeText, BytesThatAreNotUtf8_AreWrittenAsBytes)
{
    EXPECT_EQ(safeText("\xff"), "\\xff");
    EXPECT_EQ(safeText("\xc0\xaf"), "\\xc0\\xaf");                    // longer than necessary
    EXPECT_EQ(safeText("\xe0\x80\xaf"), "\\xe0\\x80\\xaf");           // the same
    EXPECT_EQ(safeText("\xed\xa0\x80"), "\\xed\\xa0\\x80");           // half of a pair
    EXPECT_EQ(safeText("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");  // beyond the last character
    EXPECT_EQ(safeText("\xe2\x80"), "\\xe2\\x80");                    // cut off
    EXPECT_EQ(safeText("\xe2"
                       "ab"),
              "\\xe2"
              "ab");
}

TEST(SafeText, CharactersThatTurnOrHideText_AreWrittenAsCodes)
{
    EXPECT_EQ(safeText("\u202eabc\u202c"), "\\u{202e}abc\\u{202c}");
    EXPECT_EQ(safeText("\u2066\u2069\u200b\u200f\u061c\ufeff\u2028\u2029"),
              "\\u{2066}\\u{2069}\\u{200b}\\u{200f}\\u{61c}\\u{feff}\\u{2028}\\u{2029}");
    EXPECT_EQ(safeText("\U000E0041\u00ad\u2060"), "\\u{e0041}\\u{ad}\\u{2060}");
}

TEST(SafeText, SafeWord_HasNoBlanks)
{
    EXPECT_EQ(safeWord("100, held\u00a0\u3000"), "100,\\x20held\\u{a0}\\u{3000}");
}

TEST(SafeText, QuotedText_EscapesQuotesAndBackslashes)
{
    EXPECT_EQ(quotedText("a \"b\" \\x1b \x1b"), R"("a \"b\" \\x1b \x1b")");
}

TEST(SafeText, AsciiText_WritesOtherCharactersAsCodes)
{
    EXPECT_EQ(asciiText("Zoë 電"), "Zo\\u{eb} \\u{96fb}");
}

TEST(SafeText, ColumnsOf_CountsWideCharactersTwiceAndAccentsNot)
{
    EXPECT_EQ(columnsOf("abc"), 3U);
    EXPECT_EQ(columnsOf("電話"), 4U);
    EXPECT_EQ(columnsOf("e\u0301"), 1U);
    EXPECT_EQ(columnsOf(""), 0U);
}

TEST(SafeText, BeginningOf_NeverCutsACharacter)
{
    EXPECT_EQ(beginningOf("電話", 3), "電");
    EXPECT_EQ(beginningOf("e\u0301x", 1), "e\u0301");
    EXPECT_EQ(beginningOf("abc", 5), "abc");
}

}  // namespace
}  // namespace telephone
