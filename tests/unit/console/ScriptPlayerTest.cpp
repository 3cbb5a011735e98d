#include "telephone/console/ScriptPlayer.h"

#include <chrono>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "ConsoleDoubles.h"
#include "telephone/time/Waiting.h"
#include "tests/doubles/TemporaryFolder.h"

using namespace telephone;
using namespace std::chrono_literals;

namespace {

class ScriptPlayerTest : public testing::Test
{
protected:
    ScriptResult resultOf(std::string const& text)
    {
        std::istringstream script(text);
        return ScriptPlayer(*telephone_.conversation).play(script, "test.script");
    }

    bool play(std::string const& text) { return resultOf(text).passed(); }

    // The last failure, which tells what did not hold.
    std::string failureOf(std::string const& text)
    {
        EXPECT_FALSE(play(text)) << text;
        std::string failures = telephone_.failures;
        failures.pop_back();
        return failures.substr(failures.rfind('\n') + 1);
    }

    // The next HoldCall request is followed by its event.
    void holdCalls()
    {
        telephone_.invoker.answer = [this](std::string const&) {
            telephone_.held(1);
            return "sfiSuccess";
        };
    }

    TalkingTelephone telephone_;
};

}  // namespace

TEST_F(ScriptPlayerTest, EmptyScript_Holds)
{
    EXPECT_TRUE(play(""));
    EXPECT_TRUE(play("# a comment\n\n   \n"));
}

TEST_F(ScriptPlayerTest, ExpectAnswer_OfTheWholeAnswerOrItsFirstPart_Holds)
{
    telephone_.invoker.answer = [](std::string const&) { return "sfiSuccess,true"; };

    EXPECT_TRUE(play("GetMicrophoneMute\nexpect answer sfiSuccess\nexpect answer sfiSuccess,true\n"));
}

TEST_F(ScriptPlayerTest, ExpectAnswer_OfSeveralWords_Holds)
{
    telephone_.invoker.answer = [](std::string const&) { return "UACSTA message is sent."; };

    EXPECT_TRUE(play("SendUACSTAServerMessage Line=4711 Body=x\nexpect answer UACSTA message is sent.\n"));
}

TEST_F(ScriptPlayerTest, ExpectAnswer_OfAnotherAnswer_FailsWithLineAndAnswer)
{
    telephone_.invoker.answer = [](std::string const&) { return "sfiFailure"; };

    EXPECT_EQ(failureOf("# one\nHoldCall Line=1 CallID=1\nexpect answer sfiSuccess\nsay never reached\n"),
              "error: test.script:3: expect answer sfiSuccess: the answer was sfiFailure");
    EXPECT_EQ(telephone_.written.find("never reached"), std::string::npos);
}

TEST_F(ScriptPlayerTest, ExpectAnswer_OfAPartOfAWord_Fails)
{
    EXPECT_EQ(failureOf("HoldCall Line=1 CallID=1\nexpect answer sfi\n"),
              "error: test.script:2: expect answer sfi: the answer was sfiSuccess");
}

TEST_F(ScriptPlayerTest, ExpectAnswer_WithoutRequestOrAnswer_Fails)
{
    EXPECT_EQ(failureOf("expect answer sfiSuccess\n"),
              "error: test.script:1: expect answer sfiSuccess: no request was sent before");
    telephone_.invoker.answer = [](std::string const&) { return ""; };
    EXPECT_EQ(failureOf("callbackDOFeatureCallID CallID=1 instanceId=2\nexpect answer sfiSuccess\n"),
              "error: test.script:2: expect answer sfiSuccess: the request has no answer");
}

TEST_F(ScriptPlayerTest, Wait_ForAnEventThatComes_HoldsAndGivesItsValues)
{
    holdCalls();

    EXPECT_TRUE(play("HoldCall Line=4711 CallID=1\n"
                     "wait CallHeldEvent CallID=1 within 5\n"
                     "RetrieveCall Line={LineID} CallID={CallID}\n"));

    EXPECT_EQ(telephone_.invoker.requests.back(), "<Method>RetrieveCall</Method><Line>4711</Line><CallID>1</CallID>");
}

TEST_F(ScriptPlayerTest, Values_AreReplacedInRequestsAsTheyStand)
{
    holdCalls();

    EXPECT_TRUE(play("HoldCall Line=4711 CallID=1\nwait "
                     "callHeld\n<Method>RetrieveCall</Method><Line>{line}</Line><CallID>1</CallID>\n"));

    EXPECT_EQ(telephone_.invoker.requests.back(), "<Method>RetrieveCall</Method><Line>4711</Line><CallID>1</CallID>");
}

TEST_F(ScriptPlayerTest, Value_ThatNoEventHad_IsRefused)
{
    EXPECT_EQ(failureOf("AnswerCall CallID={CallID}\n"), "error: test.script:1: AnswerCall CallID={CallID}: "
                                                         "no earlier wait took an event with an element CallID");
}

TEST_F(ScriptPlayerTest, Wait_ForAnEventThatDoesNotCome_FailsWithWhatCame)
{
    holdCalls();

    EXPECT_EQ(failureOf("HoldCall Line=4711 CallID=1\nwait CallRetrievedEvent within 0.2\n"),
              "error: test.script:2: wait CallRetrievedEvent within 0.2: it did not come; came instead: "
              "CallHeldEvent 4711 call 1: held");
}

TEST_F(ScriptPlayerTest, Wait_WithNothing_FailsSayingSo)
{
    EXPECT_EQ(failureOf("wait CallHeldEvent within 0\n"),
              "error: test.script:1: wait CallHeldEvent within 0: it did not come; nothing else came");
}

TEST_F(ScriptPlayerTest, Never_OfAnEventThatComes_Fails)
{
    holdCalls();

    EXPECT_EQ(failureOf("HoldCall Line=4711 CallID=1\nnever CallHeldEvent within 5\n"),
              "error: test.script:2: never CallHeldEvent within 5: it came: "
              "CallHeldEvent 4711 call 1: held");
}

TEST_F(ScriptPlayerTest, Never_OfAnEventThatDoesNotCome_Holds)
{
    holdCalls();

    EXPECT_TRUE(play("HoldCall Line=4711 CallID=1\nwait CallHeldEvent\nnever CallHeldEvent within 0.05\n"));
    EXPECT_TRUE(play("HoldCall Line=4711 CallID=1\nnever CallHeldEvent CallID=2 within 0.05\n"));
}

TEST_F(ScriptPlayerTest, ExpectLamp_ComparesItsMode)
{
    EXPECT_TRUE(play("expect lamp 1 off\n"));
    EXPECT_EQ(failureOf("expect lamp 1 steady within 0\n"),
              "error: test.script:1: expect lamp 1 steady within 0: it is off");
    EXPECT_EQ(failureOf("expect lamp 1 flashng\n"),
              "error: test.script:1: expect lamp 1 flashng: \"flashng\" is not a value of LampMode (did you mean "
              "flashing?)");
    EXPECT_EQ(failureOf("expect lamp 7 steady\n"), "error: test.script:1: expect lamp 7 steady: no lamp 7");
}

TEST_F(ScriptPlayerTest, ExpectPanel_NamesTheFirstRowThatDiffers)
{
    TemporaryFolder const folder;
    std::string const file = folder.file("panel.txt");
    std::ofstream(file) << "+----\n";

    EXPECT_EQ(failureOf("expect panel " + file + " within 0\n"), "error: test.script:1: expect panel " + file +
                                                                     " within 0: row 1 is +" + std::string(64, '-') +
                                                                     "+ and not +----");
    EXPECT_EQ(failureOf("expect panel " + folder.file("none") + "\n"),
              "error: test.script:1: expect panel " + folder.file("none") + ": cannot read " + folder.file("none") +
                  ": No such file or directory");
    EXPECT_EQ(failureOf("expect panel\n"),
              "error: test.script:1: expect panel: write it as: expect panel FILE [within SECONDS]");
}

TEST_F(ScriptPlayerTest, WrongSteps_AreRefusedWithTheirForm)
{
    EXPECT_EQ(failureOf("expect sfiSuccess\n"),
              "error: test.script:1: expect sfiSuccess: write it as: expect answer WORD, expect lamp KEY MODE "
              "[within SECONDS], or expect panel FILE [within SECONDS]");
    EXPECT_EQ(failureOf("wait CallHoldEvent\n"),
              "error: test.script:1: wait CallHoldEvent: no event CallHoldEvent (did you mean CallHeldEvent?)");
    EXPECT_EQ(
        failureOf("wait CallHeldEvent within soon\n"),
        "error: test.script:1: wait CallHeldEvent within soon: \"soon\" is not a number of seconds from 0 to 86400");
    EXPECT_EQ(failureOf("never CallHeldEvent\n"),
              "error: test.script:1: never CallHeldEvent: write it as: never EVENT within SECONDS");
    EXPECT_EQ(failureOf("pause\n"), "error: test.script:1: pause: write it as: pause SECONDS");
    EXPECT_EQ(failureOf("jump\n"), "error: test.script:1: jump: no request or command jump; help lists them");
}

TEST_F(ScriptPlayerTest, Quit_EndsTheScriptWell)
{
    EXPECT_TRUE(play("quit\nHoldCall Line=4711 CallID=1\n"));
}

TEST_F(ScriptPlayerTest, Stop_EndsAWait)
{
    telephone_.stop.signal();

    EXPECT_EQ(failureOf("wait CallHeldEvent within 60\n"),
              "error: test.script:1: wait CallHeldEvent within 60: ended by a signal");
}

TEST_F(ScriptPlayerTest, SecondsWithUnit_AreTaken)
{
    EXPECT_TRUE(play("pause 0.01 seconds\npause 0.01s\nnever CallHeldEvent within 0.01 s\n"));
}

TEST_F(ScriptPlayerTest, EventShortlyAfterTheLastStep_IsShownAndNotTimed)
{
    telephone_.dispatcher.post([](CommunicationsServiceEventIfc& events) {
        sleepFor(std::chrono::milliseconds(10));  // the event is late
        events.callHeld("4711", 1);
    });

    ScriptResult const result = resultOf("expect lamp 1 off\n");

    EXPECT_EQ(result.steps, 1);
    EXPECT_LT(result.seconds, 0.1);  // the shortest rest
    EXPECT_NE(telephone_.written.find("<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>1</CallID>"),
              std::string::npos);
}

TEST_F(ScriptPlayerTest, OptionsBeforeTheFirstStep_AreNotSteps)
{
    ScriptResult const result = resultOf("# desk\noption time real\noption check events\nsay hello\n");

    EXPECT_TRUE(result.passed());
    EXPECT_EQ(result.steps, 1);
}

TEST_F(ScriptPlayerTest, OptionAfterTheFirstStep_IsAMistake)
{
    EXPECT_EQ(failureOf("say hello\noption time real\n"),
              "error: test.script:2: option time real: options stand before the first step");
}

TEST_F(ScriptPlayerTest, Failure_HasItsLineItsStepAndItsReason)
{
    ScriptResult const result = resultOf("\nexpect lamp 1 steady within 0\n");

    ASSERT_EQ(result.failures.size(), 1U);
    EXPECT_EQ(result.failures[0].line, 2);
    EXPECT_EQ(result.failures[0].step, "expect lamp 1 steady within 0");
    EXPECT_EQ(result.failures[0].reason, "it is off");
}

TEST_F(ScriptPlayerTest, Steps_WaitTenSecondsUnlessTheySayOtherwise)
{
    auto const seconds = [this](std::string const& step) { return resultOf(step).seconds; };

    EXPECT_NEAR(seconds("wait CallHeldEvent\n"), 10, 0.001);
    EXPECT_NEAR(seconds("expect lamp 1 steady\n"), 10, 0.011);  // looked at each hundredth of a second
    EXPECT_NEAR(seconds("wait CallHeldEvent within 2.5\n"), 2.5, 0.001);
    EXPECT_NEAR(seconds("expect lamp 1 steady within 3 s\n"), 3, 0.011);
    EXPECT_NEAR(seconds("never CallHeldEvent within 4 seconds\n"), 4, 0.001);
    EXPECT_NEAR(seconds("pause 5 second\n"), 5, 0.001);
}

TEST_F(ScriptPlayerTest, Requests_WaitForATenthOfASecondOfRestButNoLongerThanASecond)
{
    // Before the second request and the command; the first finds the telephone at rest.
    EXPECT_NEAR(resultOf("HoldCall Line=4711 CallID=1\nHoldCall Line=4711 CallID=1\nsay done\n").seconds, 0.2, 0.001);
    telephone_.invoker.answer = [this](std::string const&) {
        for (int i = 0; i < 40; ++i) {
            telephone_.dispatcher.post([](CommunicationsServiceEventIfc& events) {
                events.callHeld("4711", 1);
                sleepFor(50ms);  // never a tenth of a second without an event
            });
        }
        return "sfiSuccess";
    };

    EXPECT_NEAR(resultOf("HoldCall Line=4711 CallID=1\nHoldCall Line=4711 CallID=1\n").seconds, 1, 0.06);
}

TEST_F(ScriptPlayerTest, LampThatChangesInTime_Holds)
{
    telephone_.dispatcher.post([this](CommunicationsServiceEventIfc&) {
        sleepFor(400ms);
        telephone_.controls.lampOfKey1 = "flashing";
    });

    // A script begins after a tenth of a second of rest.
    EXPECT_NEAR(resultOf("expect lamp 1 flashing\n").seconds, 0.3, 0.011);
    EXPECT_EQ(telephone_.failures, "");
}

TEST_F(ScriptPlayerTest, FailedWait_ShowsTheLatestTwentyEvents)
{
    telephone_.invoker.answer = [this](std::string const&) {
        for (int call = 1; call <= 21; ++call) {
            telephone_.held(call);
        }
        return "sfiSuccess";
    };

    std::string const failure = failureOf("HoldCall Line=4711 CallID=1\nwait CallRetrievedEvent within 0.2\n");

    EXPECT_TRUE(failure.starts_with("error: test.script:2: wait CallRetrievedEvent within 0.2: it did not come; came "
                                    "instead: CallHeldEvent 4711 call 2: held; CallHeldEvent 4711 call 3: held; "))
        << failure;
    EXPECT_TRUE(failure.ends_with("; CallHeldEvent 4711 call 21: held")) << failure;
}

TEST_F(ScriptPlayerTest, Try_GoesOnAfterARefusal)
{
    EXPECT_TRUE(play("try press 99\ntry jump\ntry HoldCall Line=4711 CallID=1\nexpect answer sfiSuccess\n"));

    EXPECT_NE(telephone_.written.find("refused: no key 99\n"), std::string::npos) << telephone_.written;
    EXPECT_NE(telephone_.written.find("refused: no request or command jump; help lists them\n"), std::string::npos)
        << telephone_.written;
    EXPECT_EQ(failureOf("try\n"), "error: test.script:1: try: write it as: try REQUEST or COMMAND");
}

TEST_F(ScriptPlayerTest, TimesThatAreNotAtTheEnd_AreRefused)
{
    for (char const* const step : {"wait CallHeldEvent within", "wait CallHeldEvent within 1 s CallID=1",
                                   "wait CallHeldEvent within 1 hour", "expect lamp 1 steady within 1 minute"}) {
        EXPECT_EQ(failureOf(std::string(step) + "\n"), std::string("error: test.script:1: ") + step +
                                                           ": write it as: within SECONDS, at the end of the line");
    }
    EXPECT_EQ(failureOf("pause 1 minute\n"), "error: test.script:1: pause 1 minute: write it as: pause SECONDS");
    EXPECT_EQ(failureOf("pause 1 s 2\n"), "error: test.script:1: pause 1 s 2: write it as: pause SECONDS");
    EXPECT_EQ(failureOf("expect lamp 1\n"), "error: test.script:1: expect lamp 1: write it as: expect lamp KEY "
                                            "off|steady|flashing|fluttering [within SECONDS]");
    EXPECT_EQ(failureOf("expect answer\n"), "error: test.script:1: expect answer: write it as: expect answer WORD, "
                                            "expect lamp KEY MODE [within SECONDS], or expect panel FILE [within "
                                            "SECONDS]");
}

TEST_F(ScriptPlayerTest, Braces_AreAPlaceholderOnlyAroundAName)
{
    EXPECT_TRUE(play("<Method>SendUACSTAServerMessage</Method><Line>4711</Line>{ \"a\": {} }\n"
                     "<Method>SendUACSTAServerMessage</Method><Line>4711</Line>{open\n"));

    EXPECT_EQ(telephone_.invoker.requests,
              (std::vector<std::string>{"<Method>SendUACSTAServerMessage</Method><Line>4711</Line>{ \"a\": {} }",
                                        "<Method>SendUACSTAServerMessage</Method><Line>4711</Line>{open"}));
}

TEST_F(ScriptPlayerTest, StrictOff_LetsWrongRequestsThrough)
{
    EXPECT_EQ(failureOf("<Method>HoldCal</Method>\n"),
              "error: test.script:1: <Method>HoldCal</Method>: there is no request HoldCal (did you mean HoldCall?)");
    EXPECT_TRUE(play("strict off\n<Method>HoldCal</Method>\n"));
    EXPECT_FALSE(play("strict off\nstrict on\n<Method>HoldCal</Method>\n"));
}

TEST_F(ScriptPlayerTest, Result_CountsTheStepsThatHeld)
{
    ScriptResult const result = resultOf("say one\nsay two\nexpect lamp 1 steady within 0\nsay four\n");

    EXPECT_EQ(result.steps, 2);
    EXPECT_EQ(telephone_.failures, "error: test.script:3: expect lamp 1 steady within 0: it is off\n");
}
