#include "telephone/chaos/Shortening.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace telephone {
namespace {

ScriptLines numbered(int count)
{
    ScriptLines lines;
    for (int i = 0; i < count; ++i) {
        lines.push_back(std::to_string(i));
    }
    return lines;
}

bool has(ScriptLines const& lines, char const* line)
{
    return std::ranges::find(lines, line) != lines.end();
}

TEST(ShorteningTest, Lines_ThatMatterStay)
{
    auto const fails = [](ScriptLines const& lines) { return has(lines, "3") && has(lines, "97"); };

    EXPECT_EQ(shortened(numbered(100), fails), (ScriptLines{"3", "97"}));
}

TEST(ShorteningTest, ScriptThatNeedsEveryLine_StaysAsItIs)
{
    auto const fails = [](ScriptLines const& lines) { return lines.size() == 7; };

    EXPECT_EQ(shortened(numbered(7), fails), numbered(7));
}

TEST(ShorteningTest, ScriptThatAlwaysFails_BecomesEmpty)
{
    EXPECT_EQ(shortened(numbered(10), [](ScriptLines const&) { return true; }), ScriptLines());
}

TEST(ShorteningTest, Attempts_AreFarFewerThanTheLines)
{
    int attempts = 0;
    auto const fails = [&attempts](ScriptLines const& lines) {
        ++attempts;
        return has(lines, "500");
    };

    EXPECT_EQ(shortened(numbered(1000), fails), (ScriptLines{"500"}));
    EXPECT_LT(attempts, 50);
}

}  // namespace
}  // namespace telephone
