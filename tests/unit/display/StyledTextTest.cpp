// Text with styles, and the words and colours of lamps.
#include "telephone/display/StyledText.h"

#include <gtest/gtest.h>

#include "telephone/display/LampWords.h"

namespace telephone {
namespace {

std::string coloured(Style style)
{
    DisplayOptions options;
    options.colour = true;
    return StyledText().add("x", style).line(options);
}

// ECMA-48, SGR.
TEST(StyledText, Styles_HaveTheirEscapeSequences)
{
    EXPECT_EQ(coloured(Style::kPlain), "x");
    EXPECT_EQ(coloured(Style::kBold), "\x1b[1mx\x1b[0m");
    EXPECT_EQ(coloured(Style::kDim), "\x1b[2mx\x1b[0m");
    EXPECT_EQ(coloured(Style::kRed), "\x1b[31mx\x1b[0m");
    EXPECT_EQ(coloured(Style::kGreen), "\x1b[32mx\x1b[0m");
    EXPECT_EQ(coloured(Style::kYellow), "\x1b[33mx\x1b[0m");
    EXPECT_EQ(coloured(Style::kBlue), "\x1b[34mx\x1b[0m");
    EXPECT_EQ(coloured(Style::kMagenta), "\x1b[35mx\x1b[0m");
}

TEST(StyledText, Cell_IsAtLeastTwoBlanksApartFromTheNext)
{
    EXPECT_EQ(StyledText().cell("ab", 5).add("c").line({}), "ab   c");
    EXPECT_EQ(StyledText().cell("abcd", 5).add("e").line({}), "abcd e");
    EXPECT_EQ(StyledText().cell("abcde", 5).add("f").line({}), "abcde  f");
}

TEST(StyledText, LineThatIsTooWide_EndsAtTheFirstPieceThatIsCut)
{
    DisplayOptions options;
    options.width = 4;
    StyledText text;
    text.add("ab").add("cd");
    EXPECT_EQ(text.line(options), "abcd");
    EXPECT_EQ(StyledText().add("ab").add("cde").line(options), "abc…");
    // A wide character that has no room leaves a column free.
    EXPECT_EQ(StyledText().add("ab中c").add("x").line(options), "ab…");
    options.ascii = true;
    EXPECT_EQ(StyledText().add("ab").add("cde").line(options), "a...");
    EXPECT_EQ(StyledText().add("ab  ").add("   ").line(options), "ab");
}

TEST(LampWords, Lamp_HasItsColourWhileItIsLit)
{
    EXPECT_EQ(lampWords({"steady", "green"}), "steady green");
    EXPECT_EQ(lampWords({"flashing", "none"}), "flashing");
    EXPECT_EQ(lampWords({"off", "red"}), "off");
    EXPECT_EQ(lampStyle({"off", "red"}), Style::kPlain);
    EXPECT_EQ(lampStyle({"steady", "red"}), Style::kRed);
    EXPECT_EQ(lampStyle({"steady", "green"}), Style::kGreen);
    EXPECT_EQ(lampStyle({"fluttering", "amber"}), Style::kYellow);
    EXPECT_EQ(lampStyle({"steady", "none"}), Style::kPlain);
}

}  // namespace
}  // namespace telephone
