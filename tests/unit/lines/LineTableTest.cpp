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
