#include "telephone/chaos/ChaosScript.h"

#include <algorithm>
#include <set>

#include <gtest/gtest.h>

namespace telephone {
namespace {

ChaosGround ground()
{
    return {{"4711", "4712"}, {"100", "103"}, {1, 2, 3}};
}

double secondsOfPauses(ScriptLines const& lines)
{
    double seconds = 0;
    for (std::string const& line : lines) {
        seconds += line.starts_with("pause ") ? std::stod(line.substr(6)) : 0;
    }
    return seconds;
}

TEST(ChaosScriptTest, Seed_DecidesTheScript)
{
    EXPECT_EQ(chaosScript(ground(), 7), chaosScript(ground(), 7));
    EXPECT_NE(chaosScript(ground(), 7), chaosScript(ground(), 8));
}

TEST(ChaosScriptTest, Script_LastsAnHourAndEndsWithACheck)
{
    ScriptLines const lines = chaosScript(ground(), 1);

    EXPECT_GE(secondsOfPauses(lines), 3600);
    EXPECT_LT(secondsOfPauses(lines), 4200);
    EXPECT_EQ(lines.back(), "check");
    EXPECT_GT(std::ranges::count(lines, "check"), 5);
}

TEST(ChaosScriptTest, Lines_MayFailButForChecksAndPauses)
{
    for (std::string const& line : chaosScript(ground(), 2)) {
        EXPECT_TRUE(line == "check" || line.starts_with("pause ") || line.starts_with("try ")) << line;
    }
}

TEST(ChaosScriptTest, Placeholders_AreFilledIn)
{
    for (std::string const& line : chaosScript(ground(), 3)) {
        EXPECT_EQ(line.find('{'), std::string::npos) << line;
    }
}

TEST(ChaosScriptTest, Seeds_TryEveryRequestThatIsNotLeftOut)
{
    std::set<std::string> methods;
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        for (std::string const& line : chaosScript(ground(), seed)) {
            if (line.starts_with("try ")) {
                methods.insert(line.substr(4, line.find(' ', 4) - 4));
            }
        }
    }

    EXPECT_TRUE(methods.contains("makeSecurityChangeReinvite"));
    EXPECT_TRUE(methods.contains("GetMessageWaitingIndicator"));
    EXPECT_FALSE(methods.contains("setLampMode"));
    EXPECT_FALSE(methods.contains("Deactivate"));
}

}  // namespace
}  // namespace telephone
