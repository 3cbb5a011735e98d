// Requests that succeed or fail surprisingly, each with the sentence that says why.
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "RunningTelephone.h"

namespace {

using Reasons = std::vector<std::string>;

// The standard telephone is a keyset with the lines 4711 and 4712.
class ReasonsTest : public testing::Test
{
protected:
    explicit ReasonsTest(std::vector<std::string> const& options = {})
        : telephone_(options)
    {
        application_.command("reasons on");
        application_.request(method("Subscribe"));
    }

    void connect(int call)
    {
        ASSERT_EQ(application_.request(method("OutgoingCallMakeRequest", "<Line>4711</Line><CallID>" +
                                                                             std::to_string(call) +
                                                                             "</CallID><Destination>100</Destination>")),
                  "sfiSuccess");
        ASSERT_EQ(application_.reasons(), Reasons());
        application_.event("<CallState>6</CallState>");
    }

    RunningTelephone telephone_;
    Application application_{telephone_.socket()};
};

class OneLineReasonsTest : public ReasonsTest
{
protected:
    OneLineReasonsTest()
        : ReasonsTest({"--config", PROJECT "/tests/integration/telephone/one-line.toml"})
    {}
};

class StoredReasonsTest : public testing::Test
{
protected:
    TemporaryFolder folder_;
};

}  // namespace

TEST_F(ReasonsTest, HoldCall_OfACallThatDoesNotExist)
{
    connect(2);

    EXPECT_EQ(application_.request(method("HoldCall", "<Line>4711</Line><CallID>7</CallID>")), "sfiFailure");
    EXPECT_EQ(application_.reasons(), Reasons{"line 4711 has no call 7; it has call 2"});

    EXPECT_EQ(application_.request(method("HoldCall", "<Line>4711</Line><CallID>2</CallID>")), "sfiSuccess");
    EXPECT_EQ(application_.reasons(), Reasons());
}

TEST_F(ReasonsTest, RetrieveCall_OfACallThatDoesNotExist_SucceedsOnAKeyset)
{
    EXPECT_EQ(application_.request(method("RetrieveCall", "<Line>4711</Line><CallID>7</CallID>")), "sfiSuccess");
    EXPECT_EQ(application_.reasons(), Reasons{"line 4711 has no call 7; the telephone has no calls"});
}

TEST_F(ReasonsTest, AcceptCall_WithoutAutoAnswerOfACallThatDoesNotExist_Succeeds)
{
    EXPECT_EQ(application_.request(method("AcceptCall", "<Line>4711</Line><CallID>7</CallID>")), "sfiSuccess");
    EXPECT_EQ(application_.reasons(), Reasons{"line 4711 has no call 7; the telephone has no calls"});
}

TEST_F(ReasonsTest, ForwardingType_ThatDoesNotExist_Succeeds)
{
    EXPECT_EQ(application_.request(method(
                  "setForwardingConfiguration", "<Line>4711</Line><fwType>99</fwType><status>1</status><uri>102</uri>")),
              "sfiSuccess");
    EXPECT_EQ(application_.reasons(), Reasons{"there is no forwarding type 99 (0 to 9)"});
}

TEST_F(ReasonsTest, SettingOfALineThatDoesNotExist_Succeeds)
{
    EXPECT_EQ(application_.request(method("SetDoNotDisturb", "<Line>9999</Line><doNotDisturbOn>1</doNotDisturbOn>")),
              "sfiSuccess");
    EXPECT_EQ(application_.reasons(), Reasons{"there is no line 9999; the lines are 4711 and 4712"});
}

TEST_F(ReasonsTest, ServiceState_ThatDoesNotExist_EndsTheService)
{
    EXPECT_EQ(application_.request(method("SetServiceState", "<state>inService</state>")), "sfiSuccess");
    EXPECT_EQ(application_.reasons(),
              Reasons{"there is no service state \"inService\" (sfiServiceInService, sfiServiceOutOfService and "
                      "sfiServiceDoNotDisturb): the telephone is out of service now"});

    EXPECT_EQ(application_.request(method("OutgoingCallMakeRequest",
                                          "<Line>4711</Line><CallID>1</CallID><Destination>100</Destination>")),
              "sfiFailure");
    EXPECT_EQ(application_.reasons(), Reasons{"the telephone is out of service"});
}

TEST_F(ReasonsTest, CallWhileLocked)
{
    application_.command("lock");

    EXPECT_EQ(application_.request(method("OutgoingCallMakeRequest",
                                          "<Line>4711</Line><CallID>1</CallID><Destination>100</Destination>")),
              "sfiFailure");
    EXPECT_EQ(application_.reasons(), Reasons{"\"100\" cannot be dialled while the telephone is locked"});
}

TEST_F(OneLineReasonsTest, AcceptCall_WithoutAutoAnswer_DoesNothing)
{
    EXPECT_EQ(application_.request(method("AcceptCall", "<CallID>7</CallID>")), "sfiSuccess");
    EXPECT_EQ(application_.reasons(), (Reasons{"there is no call 7; the telephone has no calls",
                                               "AcceptCall without AutoAnswer 0 does nothing on a telephone of one "
                                               "line"}));
}

TEST_F(StoredReasonsTest, ForwardingRule_ThatCannotBeStored_Succeeds)
{
    std::string const store = folder_.file("store");
    RunningTelephone telephone({"--store", store});
    Application application(telephone.socket());
    application.command("reasons on");
    std::filesystem::remove(store);

    EXPECT_EQ(application.request(method("setForwardingConfiguration",
                                         "<Line>4711</Line><fwType>0</fwType><status>1</status><uri>102</uri>")),
              "sfiSuccess");
    EXPECT_EQ(application.reasons(),
              Reasons{"the forwarding rule was not kept, because the store \"" + store +
                      "\" was removed or replaced while the telephone was running: restart the telephone"});
}
