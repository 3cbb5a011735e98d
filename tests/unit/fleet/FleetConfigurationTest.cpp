#include "telephone/fleet/FleetConfiguration.h"

#include <fstream>

#include <gtest/gtest.h>

#include "telephone/configuration/ConfigurationFile.h"
#include "tests/doubles/TemporaryFolder.h"

using namespace telephone;

namespace {

class FleetConfigurationTest : public testing::Test
{
protected:
    Outcome<FleetConfiguration> read(std::string const& text, int count = 3) const
    {
        std::ofstream(file()) << text;
        return FleetConfiguration::read(file(), count);
    }
    std::string refusalOf(std::string const& text, int count = 3) const
    {
        auto const outcome = read(text, count);
        return outcome ? "" : outcome.error().reason;
    }
    // As the telephone reads its own file.
    static Configuration configurationOf(FleetConfiguration const& fleet, int number)
    {
        ServerConfiguration server;
        server.registrar = "sip:127.0.0.1:5060";
        server.directedPickup = "*97";
        server.groupPickup = "*98";
        return ConfigurationFile("telephone.toml").parse(fleet.textFor(number, server, "secret")).value();
    }
    std::string file() const { return folder_.file("fleet.toml"); }

    TemporaryFolder const folder_;
};

TEST_F(FleetConfigurationTest, Placeholder_IsTheNumberInThreeDigits)
{
    EXPECT_EQ(withFleetNumber("1{number} and {number}", 7), "1007 and 007");
    EXPECT_EQ(withFleetNumber("{numbers}", 7), "{numbers}");
    EXPECT_EQ(withFleetNumber("", 7), "");
}

TEST_F(FleetConfigurationTest, WithoutFile_EachTelephoneHasALineAndKeysOfItsOwn)
{
    auto const fleet = FleetConfiguration::read("", 999);
    ASSERT_TRUE(fleet) << fleet.error().reason;

    Configuration const seventh = configurationOf(*fleet, 7);

    ASSERT_EQ(seventh.lines.size(), 1U);
    EXPECT_EQ(seventh.lines[0].id, "1007");
    EXPECT_EQ(seventh.lines[0].displayName, "Telephone 007");
    EXPECT_EQ(seventh.lines[0].password, "secret");
    ASSERT_EQ(seventh.keys.size(), 5U);
    EXPECT_EQ(seventh.keys[0].target, "1007");
    EXPECT_EQ(seventh.server.registrar, "sip:127.0.0.1:5060");
    EXPECT_EQ(seventh.server.directedPickup, "*97");
    EXPECT_EQ(seventh.server.groupPickup, "*98");
    EXPECT_EQ(seventh.http.address, "127.0.0.1:0");
    EXPECT_EQ(configurationOf(*fleet, 999).lines[0].id, "1999");
}

TEST_F(FleetConfigurationTest, File_IsThatOfEachTelephone)
{
    auto const fleet = read("[[line]]\nid = \"2{number}\"\npassword = \"p{number}\"\n[[line]]\nid = \"3{number}\"\n"
                            "[exchange]\npassword = \"other\"\n[http]\naddress = \"127.0.0.1:8080\"\n"
                            "[media]\nsource = \"silence\"\n");
    ASSERT_TRUE(fleet) << fleet.error().reason;

    Configuration const second = configurationOf(*fleet, 2);

    ASSERT_EQ(second.lines.size(), 2U);
    EXPECT_EQ(second.lines[0].id, "2002");
    EXPECT_EQ(second.lines[0].password, "p002");
    EXPECT_EQ(second.lines[1].id, "3002");
    EXPECT_EQ(second.lines[1].password, "secret");
    EXPECT_EQ(second.media.source, "silence");
    EXPECT_EQ(second.http.address, "127.0.0.1:0");
    EXPECT_EQ(fleet->common().http.address, "127.0.0.1:8080");
    EXPECT_EQ(fleet->common().exchange.password, "other");
}

TEST_F(FleetConfigurationTest, WithoutServerAndExchange_TheTelephonesHaveNone)
{
    auto const fleet = read("[exchange]\nenabled = false\n");
    ASSERT_TRUE(fleet) << fleet.error().reason;

    Configuration const first =
        ConfigurationFile("telephone.toml").parse(fleet->textFor(1, fleet->common().server, "")).value();

    EXPECT_FALSE(first.exchange.enabled);
    EXPECT_EQ(first.server.registrar, "");
    EXPECT_EQ(first.lines[0].password, "");
}

TEST_F(FleetConfigurationTest, Mistake_IsNamedWithItsLine)
{
    EXPECT_EQ(refusalOf("[media]\n\nsourse = \"silence\"\n").substr(0, file().size() + 3), file() + ":3:");
    EXPECT_EQ(refusalOf("[media\n").substr(0, file().size() + 3), file() + ":1:");
}

TEST_F(FleetConfigurationTest, WhatTelephonesWouldShare_IsRefused)
{
    std::string const all = file() + ": all telephones of the fleet would have ";

    EXPECT_EQ(refusalOf("[[line]]\nid = \"4711\"\n"), all + "line.id = 4711; write {number} in it: id = \"1{number}\"");
    EXPECT_EQ(refusalOf("[sip]\nport = 5070\n"),
              all + "sip.port = 5070; leave it out, or write {number} in it: port = 5{number}");
    EXPECT_EQ(refusalOf("[store]\npath = \"/tmp/store.db\"\n"),
              all + "store.path = /tmp/store.db; write {number} in it, or make it a relative path");
}

TEST_F(FleetConfigurationTest, WhatTelephonesDoNotShare_IsPermitted)
{
    EXPECT_EQ(refusalOf("[sip]\nport = 5{number}\n"), "");
    EXPECT_EQ(refusalOf("[store]\npath = \"store.db\"\n"), "");
    EXPECT_EQ(refusalOf("[[line]]\nid = \"4711\"\n", 1), "");
}

}  // namespace
