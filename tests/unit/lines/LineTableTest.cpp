#include "telephone/lines/LineTable.h"

#include <stdexcept>

#include "LinesFixture.h"

namespace telephone {
namespace {

class LineTableTest : public LinesFixture
{};

TEST_F(LineTableTest, Construction_WithADuplicateLineNumber_NamesTheLine)
{
    configuration_.lines[1].number = 1;
    try {
        build();
        FAIL() << "two lines of one number were taken";
    } catch (std::runtime_error const& error) {
        EXPECT_STREQ(error.what(), "line 4712: another line has its number 1");
    }
}

TEST_F(LineTableTest, Construction_WithTooManyAppearances_StatesTheLimit)
{
    configuration_.lines[2].appearances = 128;
    EXPECT_THROW(build(), std::runtime_error);
}

TEST_F(LineTableTest, Appearances_MayTakeAllVirtualLines)
{
    configuration_.lines[2].appearances = 127;
    EXPECT_EQ(LineTable(configuration_).addressOf(255, 0), (LineAddress{3, 255, 127, "4713#127"}));

    configuration_.lines[2].appearances = 128;
    try {
        LineTable const table(configuration_);
        FAIL() << "more appearances than there are virtual lines were taken";
    } catch (std::runtime_error const& error) {
        EXPECT_STREQ(error.what(), "line 4713: too many appearances; all lines together have at most 127");
    }
}

TEST_F(LineTableTest, NumberOfALine_Is255AtMost_AndNoVirtualLineThen)
{
    for (int const number : {-1, 256}) {
        configuration_.lines[1].number = number;
        EXPECT_THROW(LineTable{configuration_}, std::runtime_error) << number;
    }
    configuration_.lines[1].number = 255;
    EXPECT_EQ(LineTable(configuration_).addressOf(255, 0), (LineAddress{255, 255, 0, "4712"}));

    configuration_.lines[1].number = 130;
    LineTable const table(configuration_);
    EXPECT_EQ(table.addressOf(129, 0)->lineURI, "4713#1");
    EXPECT_EQ(table.addressOf(130, 0)->lineURI, "4712");
    EXPECT_EQ(table.addressOf(131, 0)->lineURI, "4713#2");
}

TEST_F(LineTableTest, Line_HasAppearancesFromTwoOn)
{
    configuration_.lines[0].appearances = 1;
    configuration_.lines[1].appearances = 2;
    LineTable table(configuration_);

    EXPECT_EQ(table.seizeForIncoming(1, 1001), (LineAddress{1, 1, 0, "4711"}));
    EXPECT_EQ(table.seizeForIncoming(2, 1002), (LineAddress{2, 129, 1, "4712#1"}));
}

TEST_F(LineTableTest, PrimaryLine_IsTheOneThatIsMarkedElseTheFirst)
{
    EXPECT_EQ(LineTable(configuration_).primary()->address.lineURI, "4711");
    configuration_.lines[0].primary = false;
    EXPECT_EQ(LineTable(configuration_).primary()->address.lineURI, "4711");
    configuration_.lines[2].primary = true;
    EXPECT_EQ(LineTable(configuration_).primary()->address.lineURI, "4713");
}

TEST_F(LineTableTest, Account_SaysWhetherItsLineIsSharedAndRegisters)
{
    configuration_.lines[0].registers = true;
    configuration_.lines[1].sharedLineType = LineData::kBridgedLine;
    configuration_.lines[1].isPrivate = true;
    LineTable table(configuration_);
    table.setServer({"", "127.0.0.1:5070", "secret"});

    auto const accounts = table.accounts();

    EXPECT_FALSE(accounts[0].registers) << "there is no registrar";
    EXPECT_FALSE(accounts[0].shared);
    EXPECT_FALSE(accounts[0].isPrivate);
    EXPECT_TRUE(accounts[1].shared);
    EXPECT_TRUE(accounts[1].isPrivate);
}

TEST_F(LineTableTest, AddressOf_OnAKeyset_KnowsLinesAndVirtualLinesOnly)
{
    build();

    EXPECT_FALSE(table_->addressOf(0, 0));
    EXPECT_FALSE(table_->addressOf(77, 0));
    EXPECT_EQ(table_->addressOf(2, 0), (LineAddress{2, 2, 0, "4712"}));
    EXPECT_EQ(table_->addressOf(131, 3), (LineAddress{3, 131, 3, "4713#3"}));
    EXPECT_EQ(table_->addressOf(3, 0), (LineAddress{3, 3, 0, "4713"}));
}

TEST_F(LineTableTest, UserOfARequest_IsTheUserOfALineOrItsIdentifier)
{
    configuration_.lines[0].user = "anna";
    configuration_.lines[1].user = "4711";
    build();

    EXPECT_EQ(table_->lineOfUser("anna"), 1);
    EXPECT_EQ(table_->lineOfUser("4711"), 2);
    EXPECT_EQ(table_->lineOfUser("4712"), 2);
    EXPECT_EQ(table_->lineOfUser("nobody"), std::nullopt);
}

TEST_F(LineTableTest, Accounts_AreInTheOrderOfTheLineNumbers)
{
    configuration_.lines[0].number = 9;
    configuration_.lines[0].registers = true;
    configuration_.lines[0].authUser = "auth";
    configuration_.lines[1].password = "own";
    configuration_.server.expires = 120;
    build();
    auto const accounts = table_->accounts();

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

TEST_F(LineTableTest, IncomingCall_TakesTheFirstFreeAppearance_AndNoneWhenAllAreTaken)
{
    build();
    EXPECT_EQ(table_->seizeForIncoming(3, 1001), (LineAddress{3, 129, 1, "4713#1"}));
    EXPECT_EQ(table_->seizeForIncoming(3, 1002), (LineAddress{3, 130, 2, "4713#2"}));
    EXPECT_EQ(table_->seizeForIncoming(3, 1003), (LineAddress{3, 131, 3, "4713#3"}));
    EXPECT_FALSE(table_->seizeForIncoming(3, 1004));
    EXPECT_EQ(table_->seizeForIncoming(1, 1005), (LineAddress{1, 1, 0, "4711"}));
    EXPECT_FALSE(table_->seizeForIncoming(99, 1006));
}

}  // namespace
}  // namespace telephone
