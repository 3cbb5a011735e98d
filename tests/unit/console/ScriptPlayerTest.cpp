#include "telephone/console/ScriptPlayer.h"

#include <chrono>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "ConsoleDoubles.h"
#include "telephone/time/Waiting.h"
#include "tests/doubles/TemporaryFolder.h"

using namespace telephone;

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
