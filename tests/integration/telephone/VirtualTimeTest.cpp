// The whole telephone in virtual time: runs that can be repeated, and time that moves when it is told to.
#include <csignal>
#include <fstream>
#include <set>

#include <gtest/gtest.h>

#include "Process.h"
#include "RunningTelephone.h"
#include "tests/doubles/TemporaryFolder.h"

namespace {

class VirtualTime : public testing::Test
{
protected:
    // Plays a script with the complete log, and returns both outputs.
    Ended play(std::string const& script, std::string const& seed, std::string const& configuration = {}) const
    {
        write("a.script", script);
        write("a.toml", configuration);
        return run({TELEPHONE, "play", folder_.file("a.script"), "--config", folder_.file("a.toml"), "--time",
                    "virtual", "--seed", seed, "--log-level", "6", "--socket", folder_.file("socket")});
    }

    void write(std::string const& name, std::string const& text) const { std::ofstream(folder_.file(name)) << text; }

    TemporaryFolder const folder_;
};

constexpr char const* kForwarded = "setForwardingConfiguration Line=4711 fwType=6 status=1 uri=103 cfnrRingCount=3\n"
                                   "call 4711 from 100\n"
                                   "wait CallStateChangeEvent LineID=4711 CallState=ringing\n"
                                   "never CallForwardedEvent within 14.9\n"
                                   "wait CallForwardedEvent LineID=4711 within 0.2\n";

// The answer of number 103 and the clear cross on their way.
constexpr char const* kCrossing = "OutgoingCallMakeRequest Line=4711 CallID=1 Destination=103\n"
                                  "wait CallStateChangeEvent CallState=remoteRinging\n"
                                  "pause 2\n"
                                  "CallClearRequest Line=4711 CallID=1\n"
                                  "wait CallStateChangeEvent CallState=idle\n";

}  // namespace

TEST_F(VirtualTime, Run_IsRepeatedByteForByteWithItsLog)
{
    for (std::string const seed : {"0", "7"}) {
        Ended const first = play(kForwarded, seed);
        Ended const second = play(kForwarded, seed);

        EXPECT_EQ(first.status, 0) << first.output;
        EXPECT_NE(first.output.find("INVITE sip:"), std::string::npos);
        EXPECT_EQ(first.output, second.output);
    }
}

TEST_F(VirtualTime, Seed_ChangesTheRun)
{
    EXPECT_NE(play(kForwarded, "1").output, play(kForwarded, "2").output);
}

TEST_F(VirtualTime, Seeds_LetTheClearOrTheAnswerWin)
{
    std::set<bool> outcomes;
    for (int seed = 1; seed <= 20; ++seed) {
        Ended const played = play(kCrossing, std::to_string(seed));
        EXPECT_EQ(played.status, 0) << played.output;
        outcomes.insert(played.output.find("     connected ") != std::string::npos);
    }

    EXPECT_EQ(outcomes, (std::set<bool>{false, true}));
}

TEST_F(VirtualTime, Zone_OfTheMachineChangesNothing)
{
    std::vector<std::string> const command{TELEPHONE, "--time", "virtual", "tour"};

    Process here(command, {"TZ=UTC"});
    Process elsewhere(command, {"TZ=Asia/Kathmandu"});

    EXPECT_EQ(here.readAll(), elsewhere.readAll());
}

TEST_F(VirtualTime, LinesOverTcp_UseConnectionsInMemory)
{
    Ended const played = play("OutgoingCallMakeRequest Line=4711 CallID=1 Destination=100\n"
                              "wait CallStateChangeEvent CallState=connected\n"
                              "CallClearRequest Line=4711 CallID=1\n"
                              "wait CallStateChangeEvent CallState=idle\n",
                              "3", "[sip]\ntransport = \"tcp\"\n");

    EXPECT_EQ(played.status, 0) << played.output;
    EXPECT_NE(played.output.find("Via: SIP/2.0/TCP"), std::string::npos);
    EXPECT_EQ(played.output.find("Via: SIP/2.0/UDP"), std::string::npos);
}

TEST_F(VirtualTime, Advance_BringsTheEventsBeforeItsResult)
{
    RunningTelephone telephone({"--time", "virtual"});
    Application application(telephone.socket());
    application.command("events");
    application.request(
        method("OutgoingCallMakeRequest", "<Line>4711</Line><CallID>1</CallID><Destination>103</Destination>"));

    EXPECT_EQ(application.command("time"), "2000-01-01T00:00:00.000Z virtual");
    application.command("advance 1.9");
    EXPECT_EQ(application.seen("<CallState>6</CallState>"), 0);
    application.command("advance 0.2");
    EXPECT_EQ(application.seen("<CallState>6</CallState>"), 1);
    EXPECT_EQ(application.command("time"), "2000-01-01T00:00:02.100Z virtual");
}

TEST_F(VirtualTime, Clock_BeginsWhereTheOptionSays)
{
    RunningTelephone telephone({"--time", "virtual=2025-03-30T00:59:00Z"});
    Application application(telephone.socket());

    application.command("advance 120");

    EXPECT_EQ(application.command("time"), "2025-03-30T01:01:00.000Z virtual");
}

TEST_F(VirtualTime, Signal_EndsALongAdvance)
{
    RunningTelephone telephone({"--time", "virtual"});
    Process advancing({TELEPHONE, "do", "--socket", telephone.socket(), "advance", "86400"});
    Application(telephone.socket()).command("time");

    telephone.process().signal(SIGTERM);

    EXPECT_EQ(telephone.process().wait(), 0);
    advancing.readAll();
}

TEST_F(VirtualTime, Console_DoesNotMoveTimeByItself)
{
    Ended const typed = run({TELEPHONE, "--time", "virtual", "--socket", folder_.file("socket")},
                            "OutgoingCallMakeRequest Line=4711 CallID=1 Destination=103\ntime\nadvance 2\ntime\n");

    EXPECT_EQ(typed.status, 0);
    std::size_t const before = typed.output.find("2000-01-01T00:00:00.000Z virtual");
    std::size_t const connected = typed.output.find("connected");
    std::size_t const after = typed.output.find("2000-01-01T00:00:02.000Z virtual");
    ASSERT_NE(after, std::string::npos) << typed.output;
    EXPECT_LT(before, connected) << typed.output;
    EXPECT_LT(connected, after) << typed.output;
}

TEST_F(VirtualTime, HttpRequest_AdvancesTime)
{
    write("http.toml", "[http]\naddress = \"127.0.0.1:0\"\n");
    RunningTelephone telephone({"--time", "virtual", "--config", folder_.file("http.toml")});
    telephone.process().readUntil("HTTP: ");
    std::string const output = telephone.process().readUntil("\n");
    std::size_t const begin = output.rfind("HTTP: ") + 6;
    std::string const origin = output.substr(begin, output.find("/?token=", begin) - begin);
    std::string const token = output.substr(output.find("/?token=", begin) + 8, 64);
    auto const post = [&](std::string const& command) {
        return run({"curl", "-sS", "-H", "Authorization: Bearer " + token.substr(0, token.find('\n')), "-d", command,
                    origin + "/commands"})
            .output;
    };

    EXPECT_NE(post("time").find("2000-01-01T00:00:00.000Z virtual"), std::string::npos) << post("time");
    post("advance 90");
    EXPECT_NE(post("time").find("2000-01-01T00:01:30.000Z virtual"), std::string::npos) << post("time");
    telephone.process().signal(SIGTERM);
    EXPECT_EQ(telephone.process().wait(), 0);
}

TEST_F(VirtualTime, TwoTelephones_MayUseTheSamePorts)
{
    std::string const configuration = "[sip]\nport = 5060\n[exchange]\nport = 5070\n";
    write("ports.toml", configuration);
    std::vector<std::string> const options{"--time", "virtual", "--config", folder_.file("ports.toml")};

    RunningTelephone one(options);
    RunningTelephone two(options);

    for (RunningTelephone* each : {&one, &two}) {
        Application application(each->socket());
        EXPECT_EQ(application.request(method("OutgoingCallMakeRequest",
                                             "<Line>4711</Line><CallID>1</CallID><Destination>100</Destination>")),
                  "sfiSuccess");
        application.command("advance 0");
        EXPECT_NE(application.command("calls").find("connected"), std::string::npos);
    }
}

TEST_F(VirtualTime, AdvanceInRealTime_IsRefused)
{
    Ended const played =
        run({TELEPHONE, "--time", "real", "play", "-", "--socket", folder_.file("socket")}, "advance 5\n");

    EXPECT_EQ(played.status, 1);
    EXPECT_NE(played.output.find("time is real and cannot be moved: start the telephone with --time virtual"),
              std::string::npos)
        << played.output;
}

TEST_F(VirtualTime, WhatIsOutside_IsRefused)
{
    Ended const registrar = play("pause 1\n", "0", "[server]\nregistrar = \"sip:127.0.0.1:5060\"\n");
    Ended const push = play("pause 1\n", "0", "[push]\naddress = \"http://127.0.0.1:8080/push\"\n");
    Ended const farEnd = play("reasons on\n"
                              "OutgoingCallMakeRequest Line=4711 CallID=1 Destination=sip:bob@127.0.0.1:5999\n"
                              "wait CallStateChangeEvent CallState=failed within 1\n",
                              "0");

    EXPECT_EQ(registrar.status, 1);
    EXPECT_NE(registrar.output.find("in virtual time the lines register at the built-in exchange only"),
              std::string::npos)
        << registrar.output;
    EXPECT_EQ(push.status, 1);
    EXPECT_NE(push.output.find("in virtual time no push request can leave the telephone"), std::string::npos)
        << push.output;
    EXPECT_NE(farEnd.output.find("in virtual time only the telephone and its exchange can be reached, and neither is "
                                 "at 127.0.0.1:5999"),
              std::string::npos)
        << farEnd.output;
}

TEST_F(VirtualTime, WrongOptions_AreExplained)
{
    Ended const word = run({TELEPHONE, "--time", "slow", "tour"});
    Ended const date = run({TELEPHONE, "--time", "virtual=2025-02-30T00:00:00Z", "tour"});
    Ended const seed = run({"/usr/bin/env", "-u", "TELEPHONE_TIME", TELEPHONE, "--seed", "7", "tour"});

    EXPECT_EQ(word.status, 2);
    EXPECT_NE(word.output.find("--time: write real, virtual or virtual=2025-03-30T00:59:00Z"), std::string::npos)
        << word.output;
    EXPECT_EQ(date.status, 2);
    EXPECT_EQ(seed.status, 2);
    EXPECT_NE(seed.output.find("--seed requires --time"), std::string::npos) << seed.output;
}
