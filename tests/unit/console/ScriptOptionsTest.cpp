#include "telephone/console/ScriptOptions.h"

#include <gtest/gtest.h>

using namespace telephone;

namespace {

std::string refusalOf(std::string const& script)
{
    auto const options = scriptOptions(script);
    return options ? "accepted" : options.error().reason;
}

}  // namespace

TEST(ScriptOptions, BeforeTheFirstStep_AreRead)
{
    auto const options =
        scriptOptions("# desk\n\n  option time real\nOption check events\noption config \"my desk.toml\"\n"
                      "say hello\n");

    ASSERT_TRUE(options) << options.error().reason;
    EXPECT_EQ(*options, (ScriptOptions{"real", "events", "my desk.toml"}));
}

TEST(ScriptOptions, ScriptWithout_SaysNothing)
{
    EXPECT_EQ(scriptOptions(""), ScriptOptions());
    EXPECT_EQ(scriptOptions("say option time real\n"), ScriptOptions());
    EXPECT_EQ(scriptOptions("options time real\n"), ScriptOptions());
}

TEST(ScriptOptions, AfterTheFirstStep_AreNotRead)
{
    EXPECT_EQ(scriptOptions("say hello\noption time real\n"), ScriptOptions());
}

TEST(ScriptOptions, WrongOne_IsRefusedWithItsLine)
{
    EXPECT_EQ(refusalOf("# desk\noption tmie real\n"),
              "line 2: option tmie real: write it as: option time|check|config VALUE");
    EXPECT_EQ(refusalOf("option\n"), "line 1: option: write it as: option time|check|config VALUE");
    EXPECT_EQ(refusalOf("option time\n"), "line 1: option time: write it as: option time|check|config VALUE");
    EXPECT_EQ(refusalOf("option time real now\n"),
              "line 1: option time real now: write it as: option time|check|config VALUE");
}

TEST(ScriptOptions, QuoteThatIsNotClosed_IsRefused)
{
    EXPECT_EQ(refusalOf("option config \"a b\n"), "line 1: option config \"a b: a quote \" is not closed");
}
