#include "telephone/replay/Replayer.h"

#include <gtest/gtest.h>

#include "RecordingText.h"
#include "tests/unit/console/ConsoleDoubles.h"

using namespace telephone;

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
