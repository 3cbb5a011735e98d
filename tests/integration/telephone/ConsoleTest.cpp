// The console with input from a pipe.
#include <regex>

#include <gtest/gtest.h>

#include "RunningTelephone.h"

namespace {

using Options = std::vector<std::string>;

Ended console(std::string const& lines, Options const& options = {}, std::string const& checked = "all")
{
    TemporaryFolder const folder;
    Options command{"/usr/bin/env", "LC_ALL=C.UTF-8", TELEPHONE,  "--log-level",         "0",
                    "--check",      checked,          "--socket", folder.file("socket"), "console"};
    command.insert(command.end(), options.begin(), options.end());
    return run(command, lines);
}

// With TIME for times, and N for durations.
std::string withoutTimes(std::string const& output)
{
    static std::regex const time("[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3}Z?");
    static std::regex const duration("<?[0-9]+ ms");
    return std::regex_replace(std::regex_replace(output, time, "TIME"), duration, "N ms");
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

    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.output.find("error: no request or command Hold (did you mean HoldCall?); help lists them\n"
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

    EXPECT_EQ(result.status, 0);
    EXPECT_NE(withoutTimes(result.output)
                  .find("TIME     →  4711     1     HoldCall\n"
                        "TIME     ←  4711     1     success  N ms\n"
                        "TIME     9  4711     1     held\n"
                        "4711     1     held              to 100, 0:00\n"
                        "4711     held              registered, primary\n"
                        "4712     idle              registered\n"),
              std::string::npos)
        << result.output;
}

TEST(Console, Raw_ShowsTags)
{
    char const* const lines = "HoldCall Line=4711 CallID=7\nraw off\nHoldCall Line=4711 CallID=7\n";
    Ended const result = console(lines, {"--raw"});

    EXPECT_NE(withoutTimes(result.output)
                  .find("request  <Method>HoldCall</Method><Line>4711</Line><CallID>7</CallID>\n"
                        "answer   sfiFailure\n"
                        "reason   line 4711 has no call 7; the telephone has no calls\n"
                        "TIME     →  4711     7     HoldCall\n"
                        "TIME     ←  4711     7     failure  N ms\n"
                        "TIME     ✕  4711     7     line 4711 has no call 7; the telephone has no calls\n"),
              std::string::npos)
        << result.output;
}

TEST(Console, Json_IsAnObjectALine)
{
    Ended const result = console("GetServiceState\nraw on\n", {"--json"});

    EXPECT_EQ(result.status, 1);
    std::istringstream lines(result.output);
    for (std::string line; std::getline(lines, line);) {
        EXPECT_TRUE(line.starts_with('{') && line.ends_with('}')) << line;
    }
    EXPECT_NE(result.output.find(R"({"request":"<Method>GetServiceState</Method>","time":")"), std::string::npos);
    EXPECT_NE(result.output.find(R"({"answer":"sfiSuccess,sfiServiceInService","time":")"), std::string::npos);
    EXPECT_NE(result.output.find(R"({"error":"messages are written with their tags here already","time":")"),
              std::string::npos);
}

TEST(Console, NameOfACaller_CannotChangeTheDirectionOfItsLine)
{
    for (char const* const form : {"--color=auto", "--raw", "--json"}) {
        Ended const result = console("call 4711 from 555 name \"A\xe2\x80\xae<b>\"\ncalls\n", {form}, "none");

        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.output.find("\xe2\x80\xae"), std::string::npos) << result.output;
        EXPECT_NE(result.output.find("555"), std::string::npos) << result.output;
    }
}

TEST(Console, Colour_IsForTerminals)
{
    EXPECT_EQ(console("GetServiceState\n").output.find('\x1b'), std::string::npos);
    EXPECT_NE(console("GetServiceState\n", {"--color", "always"}).output.find("\x1b[34m"), std::string::npos);
}

TEST(Console, LocaleWithoutUtf8_ShowsAscii)
{
    TemporaryFolder const folder;
    Ended const result =
        run({"/usr/bin/env", "LC_ALL=C", TELEPHONE, "--log-level", "0", "--socket", folder.file("socket")},
            "HoldCall Line=4711 CallID=7\n");

    EXPECT_NE(withoutTimes(result.output)
                  .find("TIME     >  4711     7     HoldCall\n"
                        "TIME     <  4711     7     failure  N ms\n"
                        "TIME     x  4711     7     line 4711 has no call 7; the telephone has no calls\n"),
              std::string::npos)
        << result.output;
}

TEST(Console, Settings_AreSetAndRead)
{
    Ended const result = console("store get agent-state\n"
                                 "store set agent-state ready\n"
                                 "store get agent-state\n"
                                 "store set agent-state asleep\n"
                                 "store get no-such-setting\n");

    EXPECT_NE(result.output.find("agent-state = loggedOff\nagent-state = ready\nerror: "), std::string::npos)
        << result.output;
    EXPECT_NE(result.output.find("error: no setting no-such-setting\n"), std::string::npos) << result.output;
}

TEST(Console, Output_HasTheDatesAddressesAndColoursThatAreAskedFor)
{
    auto const with = [](Options const& options) {
        return console("OutgoingCallMakeRequest Line=4711 CallID=1 Destination=100\nadvance 1\n", options).output;
    };

    EXPECT_NE(with({"--date"}).find("2000-01-01 00:00:00.000Z     5  4711     1     dialling          100\n"),
              std::string::npos);
    EXPECT_NE(with({"--addresses"}).find("00:00:00.000Z     5  4711     1     dialling          sip:100@127.0.0.1:"),
              std::string::npos);
    EXPECT_NE(with({"--color", "always"})
                  .find("\x1b[2m00:00:00.000Z\x1b[0m     5  4711     1     \x1b[1mdialling\x1b[0m          100\n"),
              std::string::npos);
    EXPECT_EQ(with({"--color", "never"}).find('\x1b'), std::string::npos);
    EXPECT_EQ(console("", {"--color", "sometimes"}).status, 2);
    EXPECT_EQ(console("", {"--raw", "--json"}).status, 2);
}

TEST(Console, Faults_AreListedAndEnded)
{
    Ended const result = console("raw on\n"
                                 "fault store full at 1000\n"
                                 "fault lamps stuck\n"
                                 "faults\n"
                                 "fault off lamps stuck\n"
                                 "faults\n"
                                 "fault off\n"
                                 "faults\n"
                                 "fault off store full\n",
                                 {}, "events");

    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.output.find("waiting: store full at 1000\n"
                                 "active: lamps stuck\n"
                                 "waiting: store full at 1000\n"
                                 "no faults\n"
                                 "error    no fault \"store full\" is active or waiting\n"),
              std::string::npos)
        << result.output;
}

TEST(Console, AllSettings_AreListed)
{
    Ended const result = console("store list\n");

    EXPECT_NE(result.output.find("cfnr-delay = 3\n"), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("phone-locked = false\n"), std::string::npos);
    EXPECT_NE(result.output.find("recording-enabled = true\n"), std::string::npos);
}

TEST(Console, Lamps_AreWrittenInEveryFormThatShowsThem)
{
    auto const with = [](Options options) {
        options.emplace_back("--lamps");
        return withoutTimes(console("store set forwarding-alternative 105\nadvance 1\n", options).output);
    };

    EXPECT_NE(with({"--raw"}).find("lamp     5 steady amber\n"), std::string::npos);
    EXPECT_NE(with({"--json"}).find(R"({"lamp":{"key":"5","mode":"steady","colour":"amber"},"time":)"),
              std::string::npos);
    EXPECT_NE(with({}).find("TIME  lamp  5              steady amber\n"), std::string::npos);
}

TEST(Console, Lock_LetsOnlyPermittedNumbersOut)
{
    Ended const result = console("lock\n"
                                 "OutgoingCallMakeRequest Line=4711 CallID=1 Destination=100\n"
                                 "unlock\n"
                                 "OutgoingCallMakeRequest Line=4711 CallID=1 Destination=100\n",
                                 {"--raw"});

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

TEST(Console, HeadsetThatIsPlugged_TakesTheSound)
{
    Ended const result = console("log 6\nplug headset\nsay now\nunplug headset\n");

    auto const headset = result.output.find("sound goes to the headset\n");
    auto const handset = result.output.find("sound goes to the handset\n");
    ASSERT_NE(headset, std::string::npos) << result.output;
    ASSERT_NE(handset, std::string::npos) << result.output;
    EXPECT_LT(headset, handset);
}

TEST(Console, LineOfAMegabyte_IsTaken)
{
    Ended const result = console("strict off\n<Method>" + std::string(1 << 20, 'x') + "</Method>\nsay still here\n",
                                 {"--raw"}, "events");

    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.output.find("answer   sfiFailure\n"), std::string::npos);
    EXPECT_NE(result.output.find("\nstill here\n"), std::string::npos);
}
