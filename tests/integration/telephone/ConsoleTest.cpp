// The console with input from a pipe.
#include <gtest/gtest.h>

#include "RunningTelephone.h"

namespace {

Ended console(std::string const& lines, std::string const& checked = "all")
{
    TemporaryFolder const folder;
    return run({TELEPHONE, "--log-level", "0", "--check", checked, "--socket", folder.file("socket")}, lines);
}

}  // namespace

TEST(Console, EndOfInput_EndsTheTelephoneWell)
{
    EXPECT_EQ(console("").status, 0);
}

TEST(Console, Quit_EndsBeforeTheRest)
{
    Ended const result = console("quit\nsay too late\n");

    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output.find("too late"), std::string::npos) << result.output;
}

TEST(Console, WrongLine_IsToldAndTheNextIsRun)
{
    Ended const result = console("Hold\nsay still here\n");

    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.output.find("error    no request or command Hold (did you mean HoldCall?); help lists them\n"
                                 "still here\n"),
              std::string::npos)
        << result.output;
}

TEST(Console, CallByHand_ShowsRequestAnswerAndEvents)
{
    Ended const result = console("OutgoingCallMakeRequest Line=4711 CallID=1 Destination=100\n"
                                 "<Method>HoldCall</Method><Line>4711</Line><CallID>1</CallID>\n"
                                 "calls\n"
                                 "lines\n");

    EXPECT_NE(result.output.find("request  <Method>HoldCall</Method><Line>4711</Line><CallID>1</CallID>\n"
                                 "answer   sfiSuccess\n"),
              std::string::npos)
        << result.output;
    EXPECT_NE(result.output.find("<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>1</CallID>\n"),
              std::string::npos)
        << result.output;
    EXPECT_NE(result.output.find("1      line 4711     held           to sip:100@127.0.0.1:"), std::string::npos)
        << result.output;
    EXPECT_NE(result.output.find("4711     number 1    held             registered, primary\n"), std::string::npos)
        << result.output;
}

TEST(Console, Settings_AreSetAndRead)
{
    Ended const result = console("store get agent-state\n"
                                 "store set agent-state ready\n"
                                 "store get agent-state\n"
                                 "store set agent-state asleep\n"
                                 "store get no-such-setting\n");

    EXPECT_NE(result.output.find("agent-state = loggedOff\nagent-state = ready\nerror    "), std::string::npos)
        << result.output;
    EXPECT_NE(result.output.find("error    no setting no-such-setting\n"), std::string::npos) << result.output;
}

TEST(Console, Lock_LetsOnlyPermittedNumbersOut)
{
    Ended const result = console("lock\n"
                                 "OutgoingCallMakeRequest Line=4711 CallID=1 Destination=100\n"
                                 "unlock\n"
                                 "OutgoingCallMakeRequest Line=4711 CallID=1 Destination=100\n");

    auto const first = result.output.find("answer   ");
    EXPECT_EQ(result.output.substr(first, 20), "answer   sfiFailure\n") << result.output;
    EXPECT_EQ(result.output.substr(result.output.find("answer   ", first + 1), 20), "answer   sfiSuccess\n");
}

TEST(Console, LogLevelSix_ShowsEveryRequest)
{
    Ended const result = console("log 6\nGetServiceState\n");

    EXPECT_NE(result.output.find("detail [SIP Communications Service] src/CommunicationsServiceInvoker:"),
              std::string::npos)
        << result.output;
    EXPECT_NE(result.output.find("handleMessage(msg = \"<Method>GetServiceState</Method>\")\n"), std::string::npos)
        << result.output;
}

TEST(Console, LogLevelSix_ShowsSipMessagesUntilTheLevelIsLowered)
{
    Ended const result = console("OutgoingCallMakeRequest Line=4711 CallID=1 Destination=100\n"
                                 "say from here on\n"
                                 "log 6\n"
                                 "<Method>HoldCall</Method><Line>4711</Line><CallID>1</CallID>\n"
                                 "log 0\n"
                                 "say up to here\n"
                                 "RetrieveCall Line=4711 CallID=1\n");

    auto const begin = result.output.find("from here on\n");
    auto const end = result.output.find("up to here\n");
    auto const first = result.output.find("sent to 127.0.0.1:");
    ASSERT_NE(first, std::string::npos) << result.output;
    EXPECT_GT(first, begin);
    EXPECT_NE(result.output.find("INVITE sip:", first), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("received from 127.0.0.1:", first), std::string::npos) << result.output;
    EXPECT_EQ(result.output.find("sent to 127.0.0.1:", end), std::string::npos) << result.output;
}

TEST(Console, LineOfAMegabyte_IsTaken)
{
    Ended const result = console("<Method>" + std::string(1 << 20, 'x') + "</Method>\nsay still here\n", "events");

    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.output.find("answer   sfiFailure\nstill here\n"), std::string::npos);
}
