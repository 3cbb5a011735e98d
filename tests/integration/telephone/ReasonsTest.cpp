// Requests that succeed or fail surprisingly, each with the sentence that says why.
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "RunningTelephone.h"

namespace {

using Reasons = std::vector<std::string>;

// The standard telephone is a keyset with the lines 4711 and 4712; a test may add to its configuration.
class ReasonsTest : public testing::Test
{
protected:
    explicit ReasonsTest(std::string const& configuration = {})
    {
        std::ofstream(file()) << configuration << "\n[store]\npath = \"" << store() << "\"\n";
        telephone_.emplace(std::vector<std::string>{"--config", file(), "--check", "events"});
        application_.emplace(telephone_->socket());
        application_->command("reasons on");
        application_->request(method("Subscribe"));
    }

    std::string file() const { return folder_.file("telephone.toml"); }
    std::string store() const { return folder_.file("store"); }

    std::optional<std::string> request(std::string const& name, std::string const& elements)
    {
        return application_->request(method(name, elements));
    }
    Reasons reasons() const { return application_->reasons(); }

    TemporaryFolder const folder_;
    std::optional<RunningTelephone> telephone_;
    std::optional<Application> application_;
};

class OneLineReasonsTest : public ReasonsTest
{
protected:
    OneLineReasonsTest()
        : ReasonsTest("keyset = false")
    {}
};

}  // namespace

TEST_F(ReasonsTest, HoldCall_OfACallThatDoesNotExist)
{
    ASSERT_EQ(request("OutgoingCallMakeRequest", "<Line>4711</Line><CallID>2</CallID><Destination>100</Destination>"),
              "sfiSuccess");
    ASSERT_EQ(reasons(), Reasons());
    application_->event("<CallState>6</CallState>");

    EXPECT_EQ(request("HoldCall", "<Line>4711</Line><CallID>7</CallID>"), "sfiFailure");
    EXPECT_EQ(reasons(), Reasons{"line 4711 has no call 7; it has call 2"});

    EXPECT_EQ(request("HoldCall", "<Line>4711</Line><CallID>2</CallID>"), "sfiSuccess");
    EXPECT_EQ(reasons(), Reasons());
}

TEST_F(ReasonsTest, RetrieveCall_OfACallThatDoesNotExist_SucceedsOnAKeyset)
{
    EXPECT_EQ(request("RetrieveCall", "<Line>4711</Line><CallID>7</CallID>"), "sfiSuccess");
    EXPECT_EQ(reasons(), Reasons{"line 4711 has no call 7; the telephone has no calls"});
}

TEST_F(ReasonsTest, AcceptCall_WithoutAutoAnswerOfACallThatDoesNotExist_Succeeds)
{
    EXPECT_EQ(request("AcceptCall", "<Line>4711</Line><CallID>7</CallID>"), "sfiSuccess");
    EXPECT_EQ(reasons(), Reasons{"line 4711 has no call 7; the telephone has no calls"});
}

TEST_F(ReasonsTest, ForwardingType_ThatDoesNotExist_Succeeds)
{
    EXPECT_EQ(
        request("setForwardingConfiguration", "<Line>4711</Line><fwType>99</fwType><status>1</status><uri>102</uri>"),
        "sfiSuccess");
    EXPECT_EQ(reasons(), Reasons{"there is no forwarding type 99 (0 to 9)"});
}

TEST_F(ReasonsTest, SettingOfALineThatDoesNotExist_Succeeds)
{
    EXPECT_EQ(request("SetDoNotDisturb", "<Line>9999</Line><doNotDisturbOn>1</doNotDisturbOn>"), "sfiSuccess");
    EXPECT_EQ(reasons(), Reasons{"there is no line 9999; the lines are 4711 and 4712"});
}

TEST_F(ReasonsTest, ServiceState_ThatDoesNotExist_EndsTheService)
{
    EXPECT_EQ(request("SetServiceState", "<state>inService</state>"), "sfiSuccess");
    EXPECT_EQ(reasons(),
              Reasons{"there is no service state \"inService\" (sfiServiceInService, sfiServiceOutOfService and "
                      "sfiServiceDoNotDisturb): the telephone is out of service now"});

    EXPECT_EQ(request("OutgoingCallMakeRequest", "<Line>4711</Line><CallID>1</CallID><Destination>100</Destination>"),
              "sfiFailure");
    EXPECT_EQ(reasons(), Reasons{"the telephone is out of service"});
}

TEST_F(ReasonsTest, CallWhileLocked)
{
    application_->command("lock");

    EXPECT_EQ(request("OutgoingCallMakeRequest", "<Line>4711</Line><CallID>1</CallID><Destination>100</Destination>"),
              "sfiFailure");
    EXPECT_EQ(reasons(), Reasons{"\"100\" cannot be dialled while the telephone is locked"});
}

TEST_F(OneLineReasonsTest, AcceptCall_WithoutAutoAnswer_DoesNothing)
{
    EXPECT_EQ(request("AcceptCall", "<CallID>7</CallID>"), "sfiSuccess");
    EXPECT_EQ(reasons(), (Reasons{"there is no call 7; the telephone has no calls",
                                  "AcceptCall without AutoAnswer 0 does nothing on a telephone of one "
                                  "line"}));
}

TEST_F(ReasonsTest, ForwardingRule_ThatCannotBeStored_Succeeds)
{
    std::filesystem::remove(store());

    EXPECT_EQ(
        request("setForwardingConfiguration", "<Line>4711</Line><fwType>0</fwType><status>1</status><uri>102</uri>"),
        "sfiSuccess");
    EXPECT_EQ(reasons(), Reasons{"the forwarding rule was not kept, because the store \"" + store() +
                                 "\" was removed or replaced while the telephone was running: restart the telephone"});
}
