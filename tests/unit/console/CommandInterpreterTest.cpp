#include "telephone/console/CommandInterpreter.h"

#include <gtest/gtest.h>

#include "CommunicationsServiceRequests.h"
#include "ConsoleDoubles.h"

using namespace telephone;

namespace {

class CommandInterpreterTest : public testing::Test
{
protected:
    std::string refusalOf(std::string const& line)
    {
        auto const result = interpreter_.run(line);
        return result ? "accepted" : result.error().reason;
    }

    TalkingTelephone telephone_;
    CommandInterpreter& interpreter_ = telephone_.conversation->interpreter();
};

}  // namespace

TEST_F(CommandInterpreterTest, ShortRequest_IsSentAndAnswered)
{
    auto const result = interpreter_.run("HoldCall Line=4711 CallID=1").value();

    EXPECT_EQ(result.kind, CommandInterpreter::Kind::kRequest);
    EXPECT_EQ(result.answer, "sfiSuccess");
    EXPECT_EQ(telephone_.invoker.requests,
              std::vector<std::string>{"<Method>HoldCall</Method><Line>4711</Line><CallID>1</CallID>"});
    EXPECT_EQ(telephone_.written, "request  <Method>HoldCall</Method><Line>4711</Line><CallID>1</CallID>\n"
                                  "answer   sfiSuccess\n");
}

TEST_F(CommandInterpreterTest, RequestAsItStands_IsSentUnchanged)
{
    EXPECT_TRUE(interpreter_.run("  <Method>holdcall</Method> # no comment  "));

    EXPECT_EQ(telephone_.invoker.requests, std::vector<std::string>{"<Method>holdcall</Method> # no comment"});
}

TEST_F(CommandInterpreterTest, RequestWithoutAnswer_IsShownAsFinished)
{
    telephone_.invoker.answer = [](std::string const&) { return ""; };

    auto const result = interpreter_.run("callbackDOFeatureCallID CallID=1 instanceId=2").value();

    EXPECT_EQ(result.answer, std::nullopt);
    EXPECT_EQ(telephone_.written,
              "request  <Method>callbackDOFeatureCallID</Method><CallID>1</CallID><instanceId>2</instanceId>\n"
              "finished \n");
}

TEST_F(CommandInterpreterTest, Answer_WithControlCharacters_IsWrittenHarmlessly)
{
    telephone_.invoker.answer = [](std::string const&) { return std::string("a\x1b[2Jb\n"); };

    EXPECT_TRUE(interpreter_.run("GetDevices"));

    EXPECT_EQ(telephone_.written, "request  <Method>GetDevices</Method>\nanswer   a\\x1b[2Jb\\x0a\n");
}

TEST_F(CommandInterpreterTest, Commands_ReachTheTelephone)
{
    for (char const* const line :
         {"press 1", "release 1", "hook up", "hook down", "plug headset", "plug headset out", "unplug headset", "lock",
          "unlock", "record on 4711", "record off 4711", "store set agent-state \"not ready\""}) {
        EXPECT_TRUE(interpreter_.run(line));
    }

    EXPECT_EQ(telephone_.controls.asked,
              (std::vector<std::string>{"press 1", "release 1", "hook up", "hook down", "plug headset in",
                                        "plug headset out", "plug headset out", "lock", "unlock", "record on 4711",
                                        "record off 4711", "set agent-state not ready"}));
}

TEST_F(CommandInterpreterTest, Lists_ArePrinted)
{
    for (char const* const line :
         {"lines", "calls", "keys", "lamps", "store list", "store get agent-state", "say hi"}) {
        EXPECT_TRUE(interpreter_.run(line));
    }

    EXPECT_EQ(telephone_.written,
              "4711 idle\nno calls\n1 line 4711\n1 off\nagent-state = ready\nagent-state = ready\nhi\n");
}

TEST_F(CommandInterpreterTest, WrongLines_AreRefusedWithAHint)
{
    EXPECT_EQ(refusalOf("HoldCal Line=4711"),
              "no request or command HoldCal (did you mean HoldCall?); help lists them");
    EXPECT_EQ(refusalOf("hepl"), "no request or command hepl (did you mean help?); help lists them");
    EXPECT_EQ(refusalOf("xyzzy"), "no request or command xyzzy; help lists them");
    EXPECT_EQ(refusalOf("press"), "write it as: press KEY");
    EXPECT_EQ(refusalOf("press 99"), "no key 99");
    EXPECT_EQ(refusalOf("hook off"), "\"off\" is neither up nor down");
    EXPECT_EQ(refusalOf("log 7"), "\"7\" is not a log level: 0 (nothing) to 6 (everything)");
    EXPECT_EQ(refusalOf("store get x"), "no setting x");
    EXPECT_EQ(refusalOf("store put x"), "write it as: store list, store get KEY, or store set KEY VALUE");
    EXPECT_EQ(refusalOf("help nothing"), "nothing is called nothing");
}

TEST_F(CommandInterpreterTest, HelpForARequest_TellsItsParametersAndAnswer)
{
    EXPECT_TRUE(interpreter_.run("help GetDoNotDisturb"));

    EXPECT_EQ(telephone_.written, "GetDoNotDisturb: Asks whether do-not-disturb is on.\n"
                                  "  deviceID=                   text; missing: empty\n"
                                  "  answer: ...,true|false\n");
}

TEST_F(CommandInterpreterTest, HelpForAnEvent_TellsItsElements)
{
    EXPECT_TRUE(interpreter_.run("help CallHeldEvent"));

    EXPECT_EQ(telephone_.written, "CallHeldEvent: A call is on hold.\n"
                                  "  LineID                      text\n"
                                  "  CallID                      number\n");
}

TEST_F(CommandInterpreterTest, RequestsAndEvents_ListTheWholeTables)
{
    EXPECT_TRUE(interpreter_.run("requests"));
    std::string const requests = telephone_.written;
    telephone_.written.clear();
    EXPECT_TRUE(interpreter_.run("events"));

    EXPECT_EQ(std::count(requests.begin(), requests.end(), '\n'), static_cast<int>(kRequestCount));
    EXPECT_NE(requests.find("HoldCall Line= CallID= HoldCallReason= Manual=\n"), std::string::npos);
    EXPECT_EQ(std::count(telephone_.written.begin(), telephone_.written.end(), '\n'), 28);
    EXPECT_NE(telephone_.written.find("CallHeldEvent LineID CallID\n"), std::string::npos);
}

TEST_F(CommandInterpreterTest, EmptyLineAndQuit_AreToldApart)
{
    EXPECT_EQ(interpreter_.run("   ")->kind, CommandInterpreter::Kind::kNothing);
    EXPECT_EQ(interpreter_.run("# comment")->kind, CommandInterpreter::Kind::kNothing);
    EXPECT_EQ(interpreter_.run("quit")->kind, CommandInterpreter::Kind::kQuit);
}
