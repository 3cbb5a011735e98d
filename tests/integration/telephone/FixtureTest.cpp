// The command `fixture` in the whole telephone: what it refuses, and fixtures over the application socket.
#include <gtest/gtest.h>

#include "Process.h"
#include "RunningTelephone.h"
#include "tests/doubles/TemporaryFolder.h"

namespace {

constexpr char const* kRinging = "[[call]]\nline = \"4711\"\nparty = \"104\"\nstate = \"ringing\"\n";
constexpr char const* kConnected = "[[call]]\nline = \"4711\"\nparty = \"103\"\n";

class Fixtures : public testing::Test
{
protected:
    // Sets a fixture up after the steps of a script; the last line of what the telephone writes.
    std::string lastLine(std::string const& fixture, std::string const& before = {},
                         std::vector<std::string> const& options = {"--time", "virtual"})
    {
        writeFile(folder_.file("desk.toml"), fixture);
        writeFile(folder_.file("a.script"), before + "fixture desk.toml\n");
        std::vector<std::string> command{TELEPHONE, "--log-level", "0", "--socket", folder_.file("socket")};
        command.insert(command.end(), options.begin(), options.end());
        command.insert(command.end(), {"play", folder_.file("a.script")});
        std::string output = run(command).output;
        output.erase(output.find_last_not_of('\n') + 1);
        return output.substr(output.rfind('\n') + 1);
    }

    // The reason for which the script failed in a line.
    std::string failure(int line, std::string const& reason) const
    {
        return "error: " + folder_.file("a.script") + ":" + std::to_string(line) + ": fixture desk.toml: " + reason;
    }

    TemporaryFolder const folder_;
};

}  // namespace

TEST_F(Fixtures, RealTime_IsRefused)
{
    EXPECT_EQ(lastLine(kRinging, {}, {"--time", "real"}),
              failure(1, "time is real and cannot be moved: start the telephone with --time virtual"));
}

TEST_F(Fixtures, TelephoneWithoutExchange_RefusesTheFirstStep)
{
    std::vector<std::string> const options{"--time", "virtual", "--no-exchange"};

    EXPECT_EQ(lastLine("[[line]]\nid = \"4711\"\nnew-messages = 1\n", {}, options),
              failure(1, "message 4711 new 1 old 0: this telephone runs without the built-in exchange"));
}

TEST_F(Fixtures, MistakeInTheFile_IsRefusedWithItsPlace)
{
    EXPECT_EQ(lastLine("muted = 1\n"),
              failure(1, folder_.file("desk.toml") + ":1: muted takes true or false, not the integer 1"));
}

TEST_F(Fixtures, WhatTheTelephoneDoesNotHave_IsRefused)
{
    EXPECT_EQ(lastLine("[[line]]\nid = \"4713\"\n"), failure(1, "there is no line 4713; the lines are 4711 and 4712"));
    EXPECT_EQ(lastLine("[[call]]\nline = \"4713\"\nparty = \"100\"\n"),
              failure(1, "there is no line 4713; the lines are 4711 and 4712"));
    EXPECT_EQ(lastLine("[[call]]\nline = \"4711\"\nparty = \"4712\"\n"),
              failure(1, "the party 4712 is a line of this telephone; a fixture takes numbers of the exchange"));
}

TEST_F(Fixtures, TelephoneWithCalls_IsRefused)
{
    EXPECT_EQ(lastLine(kConnected, "call 4712 from 105\nwait IncomingCallEvent\n"),
              failure(3, "a fixture with calls needs a telephone without calls; end them first"));
}

TEST_F(Fixtures, TelephoneWithCalls_TakesAFixtureWithoutCalls)
{
    EXPECT_EQ(lastLine("muted = true\n", "call 4712 from 105\nwait IncomingCallEvent\n"), "passed: 3 steps in 0.1 s");
}

TEST_F(Fixtures, RefusedStep_EndsTheFixtureWithItsReason)
{
    EXPECT_EQ(lastLine(kConnected, "lock\n"), failure(2, "OutgoingCallMakeRequest Line=4711 CallID=1 Destination=103: "
                                                         "\"103\" cannot be dialled while the telephone is locked"));
}

TEST_F(Fixtures, StepThatDoesNotShow_EndsTheFixture)
{
    EXPECT_EQ(lastLine(kRinging, "SetDoNotDisturb Line=4711 doNotDisturbOn=1\n"),
              failure(2, "call 4711 from 104: then call 1 is not there, not ringing"));
}

TEST_F(Fixtures, EveryState_IsReachedInBothDirections)
{
    for (std::string const state : {"connected", "held", "remotely held", "held by both", "ringing"}) {
        std::string const call = kConnected + ("state = \"" + state + "\"\nincoming = true\n");
        EXPECT_EQ(lastLine(call, {}, {"--time", "virtual", "--seed", "5"}).substr(0, 15), "passed: 1 steps") << state;
    }
    for (std::string const state :
         {"dialling", "proceeding", "remote ringing", "connected", "held", "remotely held", "held by both"}) {
        std::string const call = kConnected + ("state = \"" + state + "\"\n");
        EXPECT_EQ(lastLine(call, {}, {"--time", "virtual", "--seed", "6"}).substr(0, 15), "passed: 1 steps") << state;
    }
}

TEST_F(Fixtures, ExampleOfThePage_Plays)
{
    std::string const page = contentOf(std::string(PROJECT) + "/docs/fixtures.md");
    std::vector<std::string> blocks;
    for (auto at = page.find("```\n"); at != std::string::npos; at = page.find("```\n", at + 4)) {
        auto const end = page.find("```\n", at + 4);
        blocks.push_back(page.substr(at + 4, end - at - 4));
        at = end;
    }
    ASSERT_EQ(blocks.size(), 2U);
    writeFile(folder_.file("busy-desk.toml"), blocks[1]);
    writeFile(folder_.file("a.script"), blocks[0]);

    Ended const played =
        run({TELEPHONE, "--time", "virtual", "--socket", folder_.file("socket"), "play", folder_.file("a.script")});

    EXPECT_EQ(played.status, 0) << played.output;
}

TEST_F(Fixtures, ResultOverTheSocket_FollowsTheEvents)
{
    writeFile(folder_.file("desk.toml"), std::string(kRinging) + "[[call]]\nline = \"4712\"\nparty = \"103\"\n");
    RunningTelephone telephone({"--time", "virtual"});
    Application application(telephone.socket());
    application.command("events");

    std::string const calls = application.command("fixture " + folder_.file("desk.toml"));

    EXPECT_EQ(calls, "4712     2     connected         to 103, 0:00\n4711     1001  ringing           from 104, 0:00");
    EXPECT_EQ(application.seen("<CallState>6</CallState>"), 1);
    EXPECT_EQ(application.seen("<CallState>5</CallState>"), 1);
}

TEST_F(Fixtures, Recording_IsRepeatedWithTheFixture)
{
    writeFile(folder_.file("desk.toml"), kConnected);
    writeFile(folder_.file("a.script"),
              "fixture " + folder_.file("desk.toml") + "\nHoldCall Line=4711 CallID=1\nwait CallHeldEvent\n");
    std::vector<std::string> const telephone{TELEPHONE,  "--log-level",         "0", "--time", "virtual",
                                             "--socket", folder_.file("socket")};
    auto const with = [&telephone](std::vector<std::string> const& arguments) {
        std::vector<std::string> command = telephone;
        command.insert(command.end(), arguments.begin(), arguments.end());
        return run(command);
    };
    std::string const recording = folder_.file("a.recording");

    ASSERT_EQ(with({"--record", recording, "play", folder_.file("a.script")}).status, 0);
    Ended const repeated = with({"replay", recording});

    EXPECT_EQ(repeated.status, 0) << repeated.output;
    EXPECT_NE(repeated.output.find("no difference"), std::string::npos) << repeated.output;
}
