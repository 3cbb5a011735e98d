// The pages of docs/ that are made from tables say what the tables say. With UPDATE_DOCS in the environment the pages
// are written instead.
#include <cstdlib>

#include <gtest/gtest.h>

#include "TemporaryFolder.h"
#include "telephone/configuration/ConfigurationFields.h"
#include "telephone/configuration/ConfigurationFile.h"
#include "telephone/configuration/ConfigurationPage.h"
#include "telephone/management/SettingsPage.h"

namespace telephone {
namespace {

std::string documentPath(std::string const& name)
{
    return std::string(PROJECT_FOLDER) + "/docs/" + name;
}

void expectPage(std::string const& name, std::string const& page)
{
    if (std::getenv("UPDATE_DOCS") != nullptr) {
        writeFile(documentPath(name), page);
    }
    EXPECT_EQ(contentOf(documentPath(name)), page) << "run this test with UPDATE_DOCS=1 and look at the change";
}

TEST(Documents, ConfigurationPage_SaysWhatTheReaderTakes)
{
    expectPage("configuration.md", configurationPage());
}

TEST(Documents, SettingsPage_SaysWhatTheStoreHolds)
{
    expectPage("settings.md", settingsPage());
}

TEST(Documents, SettingsPage_HoldsAWholeRow)
{
    EXPECT_NE(settingsPage().find("| `cfnr-delay` | a number from 0 to 99 | `3` | user | `forwarding` | rings until "
                                  "nobody answers |\n"),
              std::string::npos);
}

TEST(Documents, ConfigurationPage_HoldsAWholeRow)
{
    EXPECT_NE(configurationPage().find("| `transport` | one of udp, tcp | `\"udp\"` | for registrations and calls |\n"),
              std::string::npos);
}

TEST(Documents, Example_IsAcceptedByTheReader)
{
    auto const configuration = ConfigurationFile(documentPath("example.toml")).read();

    EXPECT_EQ(configuration.lines.size(), 3U);
    EXPECT_EQ(configuration.lines[2].appearances, 3);
    EXPECT_EQ(configuration.keys.size(), 3U);
}

TEST(Documents, Example_HoldsEveryKeyOfTheReader)
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
        bool const several = name == "line" || name == "key";
        expectKeys((several ? "[[" : "[") + std::string(name), sectionFields);
    });
}

}  // namespace
}  // namespace telephone
