// Which line is meant: by identifier, address, number, appearance, key and user.
#include "telephone/lines/Lines.h"

#include <stdexcept>

#include <gmock/gmock.h>

#include "LinesFixture.h"
#include "platform/lines/ClientUtils.h"
#include "telephone/lines/DssLine.h"

namespace telephone {
namespace {

using testing::ElementsAre;

class LinesTest : public LinesFixture
{};

struct Split
{
    std::string base;
    int index;

    bool operator==(Split const&) const = default;
};

Split split(std::string const& device)
{
    Split result{"", 0};
    ClientUtils::splitMCADeviceIndex(device, result.base, result.index);
    return result;
}

TEST(DeviceIndexTest, Identifier_WithIndex_IsSplitAtTheLastHashSign)
{
    EXPECT_EQ(split("4711#2"), (Split{"4711", 2}));
    EXPECT_EQ(split("sip:4711@127.0.0.1#3"), (Split{"sip:4711@127.0.0.1", 3}));
    EXPECT_EQ(split("a#b#1"), (Split{"a#b", 1}));
}

TEST(DeviceIndexTest, Identifier_WithoutIndex_IsTheLineItself)
{
    EXPECT_EQ(split("4711"), (Split{"4711", 0}));
    EXPECT_EQ(split(""), (Split{"", 0}));
    EXPECT_EQ(split("#2"), (Split{"#2", 0}));
    EXPECT_EQ(split("4711#"), (Split{"4711#", 0}));
    EXPECT_EQ(split("4711#0"), (Split{"4711#0", 0}));
    EXPECT_EQ(split("4711#256"), (Split{"4711#256", 0}));
    EXPECT_EQ(split("4711#2x"), (Split{"4711#2x", 0}));
    EXPECT_EQ(split("4711#-1"), (Split{"4711#-1", 0}));
}

TEST_F(LinesTest, GetLine_KnowsIdentifiersAddressesAndAppearances)
{
    auto& lines = build();

    EXPECT_EQ(lines.getLine("4712")->getLineID(), 2);
    EXPECT_EQ(lines.getLine("sip:4712@127.0.0.1:5070")->getLineID(), 2);
    EXPECT_EQ(lines.getLine("sip:4712@127.0.0.1")->getLineID(), 2);
    EXPECT_EQ(lines.getLine("4713#2")->getLineID(), 130);
    EXPECT_EQ(lines.getLine("sip:4713@127.0.0.1#2")->getLineID(), 130);
    EXPECT_EQ(lines.getLine("4713#2")->getLineData()->getURI(), "4713#2");
}

TEST_F(LinesTest, GetLine_OfNoLine_IsNull)
{
    auto& lines = build();

    EXPECT_EQ(lines.getLine(""), nullptr);
    EXPECT_EQ(lines.getLine("4799"), nullptr);
    EXPECT_EQ(lines.getLine("4711#1"), nullptr);
    EXPECT_EQ(lines.getLine("4713#4"), nullptr);
    EXPECT_EQ(lines.getLine("sip:4711@elsewhere.example"), nullptr);
    EXPECT_EQ(lines.getLine("sip:"), nullptr);
}

TEST_F(LinesTest, Instance_IsTheOneLineManager)
{
    auto& lines = build();

    EXPECT_EQ(LineManager::Instance(), &lines);
    EXPECT_THROW(Lines(configuration_, *settings_), std::runtime_error);
    EXPECT_EQ(LineManager::Instance(), &lines);
}

TEST_F(LinesTest, Construction_OfTwoLinesOfOneNumber_SaysWhich)
{
    configuration_.lines[1].number = 1;
    try {
        build();
        FAIL() << "two lines of one number were taken";
    } catch (std::runtime_error const& error) {
        EXPECT_STREQ(error.what(), "line 4712: its number 1 is that of another line");
    }
}

TEST_F(LinesTest, Construction_OfTooManyAppearances_SaysHowManyThereCanBe)
{
    configuration_.lines[2].appearances = 128;
    EXPECT_THROW(build(), std::runtime_error);
}

TEST_F(LinesTest, OnlyALineOfSeveralAppearances_IsAMultiCallAppearanceLine)
{
    auto& lines = build();

    EXPECT_TRUE(lines.isMCALine("4713"));
    EXPECT_FALSE(lines.isMCALine("4711"));
    EXPECT_FALSE(lines.isMCALine("4713#1"));
    EXPECT_FALSE(lines.isMCALine("4799"));
}

TEST_F(LinesTest, Keyset_HasAKeysetTypeAndItsDevices)
{
    auto& lines = build();
    std::vector<std::string> devices{"before"};

    lines.getDeviceList(devices);

    EXPECT_EQ(lines.getKeysetType(), "keyset");
    EXPECT_THAT(devices, ElementsAre("before", "<prime:4711>", "<prime:4712>", "<prime:4713>"));
}

TEST_F(LinesTest, SingleLineTelephone_HasNoKeysetTypeAndTakesLineZeroAsItsLine)
{
    configuration_.keyset = false;
    configuration_.lines.resize(1);
    auto& lines = build();

    EXPECT_EQ(lines.getKeysetType(), "");
    ASSERT_TRUE(lines.addressOf(0, 0));
    EXPECT_EQ(lines.addressOf(0, 0)->lineURI, "4711");
    EXPECT_EQ(lines.addressOf(0, 0)->lineNumber, 1);
}

TEST_F(LinesTest, AddressOf_OnAKeyset_KnowsLinesAndVirtualLinesOnly)
{
    auto& lines = build();

    EXPECT_FALSE(lines.addressOf(0, 0));
    EXPECT_FALSE(lines.addressOf(77, 0));
    EXPECT_EQ(lines.addressOf(2, 0), (LineAddress{2, 2, 0, "4712"}));
    EXPECT_EQ(lines.addressOf(131, 3), (LineAddress{3, 131, 3, "4713#3"}));
    EXPECT_EQ(lines.addressOf(3, 0), (LineAddress{3, 3, 0, "4713"}));
}

TEST_F(LinesTest, Keys_LeadToTheirLines)
{
    configuration_.keys = {{1, "line", "4711", "", false},
                           {2, "line", "4713", "", false},
                           {3, "dss", "102", "", true},
                           {4, "blf", "103", "", false},
                           {5, "dss", "4712", "", false}};
    auto& lines = build();

    EXPECT_EQ(lines.getLineForFPK(2), lines.getLine("4713"));
    EXPECT_EQ(lines.getLineForFPK(3), nullptr);
    EXPECT_EQ(lines.getLineForFPK(99), nullptr);
    EXPECT_EQ(lines.getDSSLineForFPK(1), nullptr);
    EXPECT_EQ(lines.getDSSLineForFPK(5), lines.getLine("4712"));
    EXPECT_EQ(lines.getURIforFPK(1), "4711");
    EXPECT_EQ(lines.getURIforFPK(3), "102");
    EXPECT_EQ(lines.getURIforFPK(4), "");
    EXPECT_EQ(lines.getURIforFPK(99), "");
    EXPECT_EQ(lines.getFPKforUri("4713"), 2);
    EXPECT_EQ(lines.getFPKforUri("4713#3"), 2);
    EXPECT_EQ(lines.getFPKforUri("102"), 3);
    EXPECT_EQ(lines.getFPKforUri("4799"), -1);
}

TEST_F(LinesTest, PartyOfADirectStationKey_IsALineWithoutNumber)
{
    configuration_.keys = {{3, "dss", "102", "Desk", true}};
    auto& lines = build();
    auto* const line = lines.getDSSLineForFPK(3);

    ASSERT_NE(line, nullptr);
    EXPECT_EQ(lines.getLine("102"), line);
    EXPECT_EQ(line->getLineID(), 0);
    EXPECT_EQ(line->getLineState(), eLineStateUnknown);
    EXPECT_TRUE(line->getLineData()->getDSSMonitorOnly());
    EXPECT_EQ(line->getLineData()->getShortDescription(), "Desk");
    EXPECT_EQ(line->getLineData()->getPrimary(), 0);
}

TEST_F(LinesTest, UserOfARequest_IsTheLinesUserOrElseItsIdentifier)
{
    configuration_.lines[0].user = "anna";
    configuration_.lines[1].user = "4711";
    auto& lines = build();

    EXPECT_EQ(lines.lineOfUser("anna"), 1);
    EXPECT_EQ(lines.lineOfUser("4711"), 2);
    EXPECT_EQ(lines.lineOfUser("4712"), 2);
    EXPECT_EQ(lines.lineOfUser("nobody"), std::nullopt);
}

TEST_F(LinesTest, Accounts_AreThoseOfTheLinesByRisingNumber)
{
    configuration_.lines[0].number = 9;
    configuration_.lines[0].registers = true;
    configuration_.lines[0].authUser = "auth";
    configuration_.lines[1].password = "own";
    configuration_.server.expires = 120;
    auto const accounts = build().accounts();

    ASSERT_EQ(accounts.size(), 3U);
    EXPECT_EQ(accounts[0].lineURI, "4712");
    EXPECT_FALSE(accounts[0].registers);
    EXPECT_EQ(accounts[0].account.password, "own");
    EXPECT_EQ(accounts[0].account.authUser, "4712");
    EXPECT_EQ(accounts[2].lineNumber, 9);
    EXPECT_TRUE(accounts[2].registers);
    EXPECT_EQ(accounts[2].account.user, "4711");
    EXPECT_EQ(accounts[2].account.authUser, "auth");
    EXPECT_EQ(accounts[2].account.password, "secret");
    EXPECT_EQ(accounts[2].account.registrar, "sip:127.0.0.1:5070");
    EXPECT_EQ(accounts[2].account.domain, "127.0.0.1:5070");
    EXPECT_EQ(accounts[2].account.expires, 120U);
}

TEST_F(LinesTest, LineData_IsTheConfigurationOfTheLine)
{
    auto& line = configuration_.lines[1];
    line.description = "Lab";
    line.ring = 2;
    line.ringDelay = 7;
    line.visibleOnOverview = false;
    line.audibleAlert = 3;
    line.hotWarmType = LineData::kWarmLine;
    line.hotWarmDigits = "103";
    line.sharedLineType = LineData::kBridgedLine;
    line.isPrivate = true;
    auto& lines = build();
    auto& data = *lines.getLine("4712")->getLineData();

    EXPECT_EQ(data.getURI(), "4712");
    EXPECT_EQ(data.getPrimary(), 0);
    EXPECT_EQ(data.getShortDescription(), "Lab");
    EXPECT_EQ(data.getRing(), 2);
    EXPECT_EQ(data.getRingDelay(), 7);
    EXPECT_EQ(data.getOverviewPosition(), 2);
    EXPECT_FALSE(data.getVisibleOnOverview());
    EXPECT_EQ(data.getLineAudibleAlert(), 3);
    EXPECT_EQ(data.getHotWarmType(), 2);
    EXPECT_EQ(data.getHotWarmDigits(), "103");
    EXPECT_EQ(data.getSharedLineType(), 2);
    EXPECT_TRUE(lines.lineConsideredAsPrivate("4712"));
    EXPECT_FALSE(lines.lineConsideredAsPrivate("4711"));
    EXPECT_FALSE(lines.lineConsideredAsPrivate("4799"));
    EXPECT_EQ(lines.getLine("4711")->getLineData()->getPrimary(), 1);
}

TEST_F(LinesTest, FeaturesOfALine_AreKeptInTheStore)
{
    auto& line = *build().getLine("4712");
    line.setDNDConfiguration(true);
    line.setForwardingConfiguration(sfiForwardNoReply, true, "sip:103@127.0.0.1;x=1", 4);
    line.setForwardingConfiguration(sfiForwardBusy, false, "", 0);
    line.setForwardingConfiguration(static_cast<sfiForwardingType>(10), true, "100", 0);

    Line::serverFeaturesSettings read;
    line.getServerFeaturesSettings(read);

    EXPECT_TRUE(read.dnd);
    ASSERT_EQ(read.forwarding.size(), 2U);
    EXPECT_TRUE(read.forwarding.at(sfiForwardNoReply).status);
    EXPECT_EQ(read.forwarding.at(sfiForwardNoReply).destination, "sip:103@127.0.0.1;x=1");
    EXPECT_EQ(read.forwarding.at(sfiForwardNoReply).ringCount, 4);
    EXPECT_FALSE(read.forwarding.at(sfiForwardBusy).status);
    EXPECT_EQ(settings_->text("line/4712/forwarding-6"), "on;4;sip:103@127.0.0.1;x=1");
    EXPECT_EQ(settings_->text("line/4712/do-not-disturb"), "true");
}

}  // namespace
}  // namespace telephone
