// docs/configuration.md matches the tables of the configuration file, and docs/example.toml has all their keys.
#include "telephone/configuration/ConfigurationPage.h"

#include <gtest/gtest.h>

#include "telephone/configuration/ConfigurationFields.h"
#include "telephone/configuration/ConfigurationFile.h"
#include "tests/doubles/GeneratedPage.h"

namespace telephone {
namespace {

TEST(ConfigurationPage, MatchesTheReader)
{
    expectPage("configuration.md", configurationPage());
}

TEST(ConfigurationPage, HoldsAWholeRow)
{
    EXPECT_NE(
        configurationPage().find("| `transport` | one of udp, tcp, tls | `\"udp\"` | for registrations and calls |\n"),
        std::string::npos);
}

TEST(ConfigurationExample, IsAcceptedByTheReader)
{
    auto const configuration = ConfigurationFile(documentPath("example.toml")).read().value();

    EXPECT_EQ(configuration.lines.size(), 3U);
    EXPECT_EQ(configuration.lines[2].appearances, 3);
    EXPECT_EQ(configuration.keys.size(), 3U);
}

TEST(ConfigurationExample, HoldsEveryKeyOfTheReader)
{
    auto const example = contentOf(documentPath("example.toml"));
    auto const expectKeys = [&example](std::string const& heading, auto const& sectionFields) {
        auto const begin = heading.empty() ? 0 : example.find("\n" + heading);
        ASSERT_NE(begin, std::string::npos) << heading;
        auto const section = example.substr(begin, example.find("\n[", begin + 2) - begin);
        for (auto const& field : sectionFields) {
            EXPECT_NE(section.find("\n" + std::string(field.name) + " = "), std::string::npos)
                << heading << " " << field.name;
        }
    };

    expectKeys("", fields::kPhone);
    forEachSection([&](std::string_view name, auto, auto const& sectionFields) {
        bool const several = name == "line" || name == "key" || name == "exchange.number" || name == "fault";
        expectKeys((several ? "[[" : "[") + std::string(name), sectionFields);
    });
}

}  // namespace
}  // namespace telephone
