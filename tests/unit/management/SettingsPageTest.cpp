// docs/settings.md matches the table of settings.
#include "telephone/management/SettingsPage.h"

#include "tests/doubles/GeneratedPage.h"

namespace telephone {
namespace {

TEST(SettingsPage, MatchesTheTable)
{
    expectPage("settings.md", settingsPage());
}

TEST(SettingsPage, HoldsAWholeRow)
{
    EXPECT_NE(settingsPage().find("| `cfnr-delay` | a number from 0 to 99 | `3` | user | `forwarding` | rings before a "
                                  "call counts as not answered |\n"),
              std::string::npos);
}

}  // namespace
}  // namespace telephone
