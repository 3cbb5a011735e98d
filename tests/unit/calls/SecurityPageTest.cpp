// docs/security.md matches the tables, and the configuration has a setting for each row.
#include "telephone/calls/SecurityPage.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "telephone/configuration/ConfigurationFields.h"
#include "telephone/sip/Permissions.h"
#include "tests/doubles/GeneratedPage.h"

namespace telephone {

TEST(SecurityPage, MatchesTheTables)
{
    expectPage("security.md", securityPage());
}

TEST(SecurityPage, HoldsWholeRows)
{
    EXPECT_NE(securityPage().find("| INVITE | calls the line | `calls` | server | anybody |\n"), std::string::npos);
    EXPECT_NE(securityPage().find("| INVITE with Replaces or Join | takes a call of the line over, or joins it | "
                                  "`take-overs` | authenticated | authenticated |\n"),
              std::string::npos);
}

TEST(Permissions, EachHasASettingWithTheSameNameAndWords)
{
    ASSERT_EQ(sip::kPermissions.size(), fields::kPermissions.size());
    for (std::size_t i = 0; i < sip::kPermissions.size(); ++i) {
        EXPECT_EQ(sip::kPermissions[i].name, fields::kPermissions[i].name);
        EXPECT_EQ(sip::kSenderChoices, fields::kPermissions[i].choices);
    }
}

}  // namespace telephone
