#include "telephone/access/CommandSyntax.h"

#include <gtest/gtest.h>

using namespace telephone;

namespace {

using Texts = std::vector<std::string>;

std::string parsed(char const* pattern, Words const& words)
{
    auto const arguments = CommandSyntax(pattern).parse(words, 0);
    if (!arguments) {
        return "refused: " + arguments.error().reason;
    }
    std::string text;
    for (auto const& each : *arguments) {
        text += "[" + each.value_or("-") + "]";
    }
    return text;
}

}  // namespace

TEST(CommandSyntax, Values_AreTakenInOrder)
{
    EXPECT_EQ(parsed("SETTING VALUE", {"a", "b c"}), "[a][b c]");
    EXPECT_EQ(parsed("", {}), "");
}

TEST(CommandSyntax, Choice_IgnoresCapitals)
{
    EXPECT_EQ(parsed("on|off LINE", {"ON", "4711"}), "[on][4711]");
    EXPECT_EQ(parsed("on|off LINE", {"maybe", "4711"}), "refused: \"maybe\" is not on or off");
}

TEST(CommandSyntax, KeywordGroups_CarryTheirValue)
{
    EXPECT_EQ(parsed("LINE from NUMBER [name NAME]", {"4711", "from", "555"}), "[4711][555][-]");
    EXPECT_EQ(parsed("LINE from NUMBER [name NAME]", {"4711", "from", "555", "name", "Ann"}), "[4711][555][Ann]");
    EXPECT_EQ(parsed("LINE new COUNT old COUNT", {"4711", "new", "3", "old", "1"}), "[4711][3][1]");
    EXPECT_EQ(parsed("N to M from O", {"1", "to", "2", "from", "3"}), "[1][2][3]");
    EXPECT_EQ(parsed("N TO", {"1", "from"}), "[1][from]");
}

TEST(CommandSyntax, OptionalGroups_ComeInAnyOrder)
{
    EXPECT_EQ(parsed("[after NUMBER] [line LINES]", {"line", "4711", "after", "3"}), "[3][4711]");
    EXPECT_EQ(parsed("DEVICE [out]", {"headset", "out"}), "[headset][out]");
    EXPECT_EQ(parsed("[TEXT...]", {"a", "b"}), "[a b]");
    EXPECT_EQ(parsed("[TEXT...]", {}), "[-]");
}

TEST(CommandSyntax, MissingAndSurplusWords_AreRefused)
{
    EXPECT_EQ(parsed("LINE from NUMBER", {"4711"}), "refused: from is missing");
    EXPECT_EQ(parsed("LINE from NUMBER", {"4711", "from"}), "refused: the value of from is missing");
    EXPECT_EQ(parsed("LINE from NUMBER", {"4711", "to", "5"}), "refused: \"to\" is not expected");
    EXPECT_EQ(parsed("up|down", {}), "refused: up or down is missing");
    EXPECT_EQ(parsed("KEY", {"1", "2"}), "refused: \"2\" is not expected");
}

TEST(CommandSyntax, Next_IsWhatMayFollow)
{
    CommandSyntax const syntax("LINE from NUMBER [name NAME]");

    EXPECT_EQ(syntax.next({}, 0), Texts{"LINE"});
    EXPECT_EQ(syntax.next({"4711"}, 0), Texts{"from"});
    EXPECT_EQ(syntax.next({"4711", "from"}, 0), Texts{"NUMBER"});
    EXPECT_EQ(syntax.next({"4711", "from", "5"}, 0), Texts{"name"});
    EXPECT_EQ(CommandSyntax("on|off LINE").next({}, 0), (Texts{"on", "off"}));
}
