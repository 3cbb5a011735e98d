#include "telephone/replay/Replayer.h"

#include <gtest/gtest.h>

#include "RecordingText.h"
#include "telephone/time/Waiting.h"
#include "tests/unit/console/ConsoleDoubles.h"

using namespace telephone;
using namespace std::chrono_literals;

namespace {

class ReplayerTest : public testing::Test
{
protected:
    TableRows replay(std::string const& lines)
    {
        telephone_.controls.present.domain = "127.0.0.1:40001";
        Recording const recording = recordingOf(lines);
        ReplayReport report("r");
        DisplayOptions const options;
        auto const played = Replayer(*telephone_.conversation, recording, options).play(report);
        return played ? report.rows() : TableRows{played.error().reason};
    }

    TalkingTelephone telephone_;
};

}  // namespace

TEST_F(ReplayerTest, InputsReachTheTelephone_AndEqualRepliesAreNoDifference)
{
    EXPECT_EQ(replay(requestLine(0, holdCall("3")) + commandLine(10, "press 1") +
                     commandLine(20, "call 4711 from sip:5@127.0.0.1:5060")),
              TableRows{"r: 3 messages, no difference"});

    EXPECT_EQ(telephone_.invoker.requests, std::vector<std::string>{holdCall("3")});
    EXPECT_EQ(telephone_.controls.asked,
              (std::vector<std::string>{"press 1", "call 4711 from sip:5@127.0.0.1:40001 name "}));
}

TEST_F(ReplayerTest, IdThatTheTelephoneChose_IsThePresentOne)
{
    telephone_.invoker.answer = [this](std::string const& request) {
        if (request == "<Method>GetDevices</Method>") {
            telephone_.held(1005);
        }
        return "sfiSuccess";
    };

    EXPECT_EQ(replay(requestLine(0, "<Method>GetDevices</Method>") + eventLine(1, 7, held("1001")) +
                     requestLine(2, holdCall("1001"))),
              TableRows{"r: 3 messages, no difference"});
    EXPECT_EQ(telephone_.invoker.requests, (std::vector<std::string>{"<Method>GetDevices</Method>", holdCall("1005")}));
}

TEST_F(ReplayerTest, EventsBeforeTheRecording_DoNotCount)
{
    telephone_.held(1);

    EXPECT_EQ(replay(commandLine(0, "press 1")), TableRows{"r: 1 message, no difference"});
}

TEST_F(ReplayerTest, OtherAnswer_IsADifference)
{
    telephone_.invoker.answer = [](std::string const&) { return "sfiFailure"; };

    EXPECT_EQ(replay(requestLine(0, holdCall("3"))),
              (TableRows{"r:2: different: HoldCall 4711 call 3; answer was sfiSuccess and is sfiFailure",
                         "r: 1 message, 1 difference"}));
}

TEST_F(ReplayerTest, MissingAnswer_IsADifference)
{
    telephone_.invoker.answer = [](std::string const&) { return ""; };

    EXPECT_EQ(replay(requestLine(0, holdCall("3"))).front(),
              "r:2: different: HoldCall 4711 call 3; answer was sfiSuccess and is empty");
}

TEST_F(ReplayerTest, RefusedCommand_IsComparedByItsSentence)
{
    std::string const refused = R"({"command":"press 99","session":"a")" + at(0) + "}\n" +
                                R"({"error":"no key 99","session":"a")" + at(0) + "}\n";

    EXPECT_EQ(replay(refused), TableRows{"r: 1 message, no difference"});
    EXPECT_EQ(replay(commandLine(0, "press 99")).front(), "r:2: different: press 99; error was empty and is no key 99");
}

TEST_F(ReplayerTest, ResultOfACommand_IsNotCompared)
{
    EXPECT_EQ(replay(commandLine(0, "store list", "agent-state = not ready")),
              TableRows{"r: 1 message, no difference"});
}

TEST_F(ReplayerTest, CommandsAboutTheProgram_AreNotRepeated)
{
    EXPECT_EQ(replay(commandLine(0, "quit") + commandLine(0, "record /nowhere/r") + commandLine(0, "record off") +
                     commandLine(0, "say x") + commandLine(0, "record off 4711")),
              TableRows{"r: 1 message, no difference"});
    EXPECT_EQ(telephone_.controls.asked, std::vector<std::string>{"record off 4711"});
}

TEST_F(ReplayerTest, StrictSession_IsStrictAgain)
{
    std::string const line = R"({"request":"<Method>HoldCal</Method>","session":"a","strict":true)" + at(0) + "}\n" +
                             R"x({"error":"there is no request HoldCal (did you mean HoldCall?)","session":"a")x" +
                             at(0) + "}\n";

    EXPECT_EQ(replay(line), TableRows{"r: 1 message, no difference"});
    EXPECT_TRUE(telephone_.invoker.requests.empty());
}

TEST_F(ReplayerTest, EventsAreCompared)
{
    telephone_.invoker.answer = [this](std::string const&) {
        telephone_.held(3);
        return "sfiSuccess";
    };

    EXPECT_EQ(replay(requestLine(0, holdCall("3")) + eventLine(1, 7, held("3"))),
              TableRows{"r: 2 messages, no difference"});
    EXPECT_EQ(
        replay(requestLine(0, holdCall("3"))),
        (TableRows{"r:0: extra, behind this line: CallHeldEvent 4711 call 3: held", "r: 1 message, 1 difference"}));
}

TEST_F(ReplayerTest, SignalBeforeTheEnd_IsARefusal)
{
    telephone_.stop.signal();

    EXPECT_EQ(replay(commandLine(0, "press 1")), TableRows{"ended by a signal before the end of the recording"});
    EXPECT_TRUE(telephone_.controls.asked.empty());
}

TEST_F(ReplayerTest, Inputs_AreAsFarApartAsTheyWere)
{
    std::vector<SteadyClock::duration> times;
    telephone_.invoker.answer = [&times](std::string const&) {
        times.push_back(SteadyClock::now().time_since_epoch());
        return "sfiSuccess";
    };

    auto const begun = SteadyClock::now();
    replay(requestLine(200, holdCall("1")) + requestLine(550, holdCall("2")) + R"({"end":null)" + at(950) + "}\n");

    ASSERT_EQ(times.size(), 2U);
    EXPECT_GE(times[1] - times[0], 340ms);
    EXPECT_LT(times[1] - times[0], 450ms);
    EXPECT_GE(SteadyClock::now() - begun, 950ms);
    EXPECT_LT(SteadyClock::now() - begun, 2s);
}

TEST_F(ReplayerTest, EventThatDoesNotCome_IsWaitedForASecond)
{
    std::vector<SteadyClock::duration> times;
    telephone_.invoker.answer = [&times](std::string const&) {
        times.push_back(SteadyClock::now().time_since_epoch());
        return "sfiSuccess";
    };

    EXPECT_EQ(replay(requestLine(0, holdCall("1")) + eventLine(10, 7, held("1")) + requestLine(20, holdCall("2"))),
              (TableRows{"r:5: missing: CallHeldEvent 4711 call 1: held", "r: 3 messages, 1 difference"}));

    ASSERT_EQ(times.size(), 2U);
    EXPECT_GE(times[1] - times[0], 1010ms);
    EXPECT_LT(times[1] - times[0], 1400ms);
}

TEST_F(ReplayerTest, EventThatComesLate_IsOneThatCame)
{
    telephone_.invoker.answer = [this](std::string const& request) {
        if (request == holdCall("1")) {
            telephone_.dispatcher.post([](CommunicationsServiceEventIfc& events) {
                sleepFor(900ms);  // the event is late
                events.callHeld("4711", 1);
            });
        }
        return "sfiSuccess";
    };

    EXPECT_EQ(replay(requestLine(0, holdCall("1")) + eventLine(10, 7, held("1")) + requestLine(20, holdCall("2"))),
              TableRows{"r: 3 messages, no difference"});
}

// A telephone that was not ready when its recording began sent its first events before the first input.
TEST_F(ReplayerTest, FirstInputOfATelephoneThatBecameReady_IsSentAtOnce)
{
    std::vector<SteadyClock::duration> times;
    telephone_.invoker.answer = [&times](std::string const&) {
        times.push_back(SteadyClock::now().time_since_epoch());
        return "sfiSuccess";
    };
    std::string header = kHeader;
    header.replace(header.find("\"ready\":true"), 12, "\"ready\":false");
    Recording const recording = readLines(header + requestLine(8000, holdCall("1"))).value();
    ReplayReport report("r");

    auto const begun = SteadyClock::now().time_since_epoch();
    ASSERT_TRUE(Replayer(*telephone_.conversation, recording, DisplayOptions()).play(report));

    ASSERT_EQ(times.size(), 1U);
    EXPECT_LT(times[0] - begun, 1s);
}

TEST_F(ReplayerTest, Sessions_AreThoseOfTheRecording)
{
    telephone_.invoker.answer = [](std::string const&) { return "sfiFailure"; };
    auto const request = [](char const* session, char const* reasons) {
        return R"({"request":")" + holdCall("3") + R"(","session":")" + session + R"(","reasons":)" + reasons + at(0) +
               "}\n" + R"({"answer":"sfiFailure","session":")" + session + "\"" + at(0) + "}\n";
    };
    std::string const reason =
        R"({"reason":"there is no call 3; the telephone has no calls","session":"b")" + at(0) + "}\n";

    // Whether there are reasons is as it was for that input.
    EXPECT_EQ(replay(request("a", "false") + request("b", "true") + reason + request("a", "false")),
              TableRows{"r: 3 messages, no difference"});
    EXPECT_EQ(telephone_.invoker.requests.size(), 3U);
}
