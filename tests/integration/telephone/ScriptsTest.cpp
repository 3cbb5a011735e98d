// Scripts that fail, and the messages of the program. Each script that succeeds is a test of its own.
#include <fstream>

#include <gtest/gtest.h>

#include "CommunicationsServiceRequests.h"
#include "RunningTelephone.h"

namespace {

Ended play(std::string const& script)
{
    return run({TELEPHONE, "--log-level", "0", "play", "-"}, script);
}

}  // namespace

TEST(Scripts, EveryRequest_IsInTheScriptOfAllRequests)
{
    std::ifstream file(SCRIPTS "/every-request.script");
    std::string const script((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());

    for (RequestDescription const& each : kRequestDescriptions) {
        std::string const line = "\n" + std::string(each.name);
        EXPECT_TRUE(script.find(line + " ") != std::string::npos || script.find(line + "\n") != std::string::npos)
            << each.name;
    }
}

TEST(Scripts, ScriptThatHolds_EndsWithZeroAndSaysSo)
{
    Ended const result = play("GetServiceState\nexpect answer sfiSuccess\n");

    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_NE(result.output.find("success, in service"), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("passed            expect answer sfiSuccess"), std::string::npos) << result.output;
    EXPECT_EQ(lastLine(result.output).rfind("passed: 2 steps in ", 0), 0U) << result.output;
}

TEST(Scripts, Failure_IsOnStandardError)
{
    Ended const result =
        run({"/bin/sh", "-c", "exec \"$0\" --log-level 0 play - 2>/dev/null", TELEPHONE}, "HoldCal Line=4711\n");

    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output.find("HoldCal"), std::string::npos) << result.output;
}

TEST(Scripts, WrongAnswer_EndsWithOneAndTheLine)
{
    Ended const result = play("# first\nHoldCall Line=4711 CallID=1\nexpect answer sfiSuccess\n");

    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(lastLine(result.output), "error: standard input:3: expect answer sfiSuccess: the answer was sfiFailure");
}

TEST(Scripts, EventThatDoesNotCome_EndsWithOneAndWhatCame)
{
    Ended const result = play("OutgoingCallMakeRequest Line=4711 CallID=1 Destination=101\n"
                              "wait CallStateChangeEvent CallState=connected within 1\n");

    EXPECT_EQ(result.status, 1);
    std::string const failure = lastLine(result.output);
    EXPECT_EQ(failure.rfind("error: standard input:2: wait CallStateChangeEvent CallState=connected within 1: it did "
                            "not come; came instead: ",
                            0),
              0U)
        << failure;
    EXPECT_TRUE(failure.ends_with("; CallStateChangeEvent 4711 call 1: dialling, 101; "
                                  "CallStateChangeEvent 4711 call 1: busy, 101, call-back possible"))
        << failure;
}

TEST(Scripts, EventThatMustNotCome_EndsWithOne)
{
    Ended const result = play("OutgoingCallMakeRequest Line=4711 CallID=1 Destination=100\n"
                              "never CallStateChangeEvent CallState=connected within 10\n");

    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(lastLine(result.output)
                  .rfind("error: standard input:2: never CallStateChangeEvent CallState=connected within 10: it came: "
                         "CallStateChangeEvent 4711 call 1: connected, ",
                         0),
              0U)
        << result.output;
}

TEST(Scripts, WrongLine_EndsWithOneAndTheNearestName)
{
    Ended const result = play("HoldCal Line=4711\n");

    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(lastLine(result.output), "error: standard input:1: HoldCal Line=4711: no request or command HoldCal "
                                       "(did you mean HoldCall?); help lists them");
}

TEST(Scripts, LampThatIsOtherwise_EndsWithOne)
{
    Ended const result = play("expect lamp 1 flashing within 0.1\n");

    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(lastLine(result.output), "error: standard input:1: expect lamp 1 flashing within 0.1: it is off");
}

TEST(Scripts, FileThatIsNotThere_EndsWithOne)
{
    Ended const result = run({TELEPHONE, "--log-level", "0", "play", "/no/such/file"});

    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(lastLine(result.output), "telephone: /no/such/file: cannot be read");
}

TEST(Scripts, SignalBeforeTheEndOfAScript_EndsTheTelephone)
{
    Process process({TELEPHONE, "--log-level", "4", "play", "-"});
    process.write("say playing\n");
    process.readUntil("4711 is registered");

    process.signal(SIGTERM);

    EXPECT_EQ(process.wait(), 1);
    EXPECT_EQ(lastLine(process.output()), "telephone: ended by a signal before the end of the script");
}

TEST(Scripts, Mistakes_AreAllReportedBeforeTheFirstStep)
{
    Ended const result =
        run({TELEPHONE, "--log-level", "0", "play", "-"}, "OutgoingCallMakeRequest Line=4711 CallID=1 Destination=100\n"
                                                          "wait CallStateChangeEvent CallState=conected\n"
                                                          "hoold up\n");

    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.output.find("standard input:2: wait CallStateChangeEvent CallState=conected: \"conected\" is not "
                                 "a value of CallState (did you mean connected?)\n"),
              std::string::npos)
        << result.output;
    EXPECT_NE(result.output.find("standard input:3: hoold up: no request or command hoold (did you mean hook?); help "
                                 "lists them\n"),
              std::string::npos)
        << result.output;
    EXPECT_EQ(result.output.find("OutgoingCallMakeRequest"), std::string::npos) << result.output;
}

TEST(Scripts, Tour_DrawsWhatTheTelephoneCan)
{
    Ended const result = run({"/usr/bin/env", "LC_ALL=C", TELEPHONE, "--log-level", "0", "tour"});

    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_EQ(result.output.rfind("This telephone calls numbers of its own exchange, on this machine only. ", 0), 0U);
    for (char const* const each :
         {"s   application                                            telephone                         far end\n",
          "== Put the call on hold and take it back\n",
          "|----------- OutgoingCallMakeRequest 100 ------------>|                                  |\n",
          "|<--------------------- success ----------------------|                                  |\n",
          "|<---------------- event 8: connected ----------------|<---------- 100 answers ----------|\n",
          "|<------------------ event 9: held -------------------|----------- hold 100 ------------>|\n",
          "|<---- event 26: conference, 2 parties: 4711, 100 ----|                                  |\n",
          "|<------------------ event 34: idle ------------------|<--------- 199 hangs up ----------|\n"}) {
        EXPECT_NE(result.output.find(each), std::string::npos) << each << result.output;
    }
}

TEST(Scripts, Tour_OnATerminal_CanBeWatchedOnThePanel)
{
    TemporaryFolder const folder;
    std::string const tour = std::string(TELEPHONE) + " --log-level 0 --socket " + folder.file("socket") + " tour";
    Process process({"/usr/bin/script", "-qec", tour, "/dev/null"});

    process.readUntil("panel: http://127.0.0.1:");
    process.readUntil("or with Enter.");
    process.readUntil("100 on hold for 2.0 s");
    process.readUntil("== That was the tour: every step came as expected");
    process.readUntil("telephone> ");
    process.write("quit\n");

    EXPECT_EQ(process.wait(), 0) << process.output();
}

TEST(Scripts, TwoAtOnce_DoNotDisturbEachOther)
{
    Process first({TELEPHONE, "play", SCRIPTS "/number-103-answers-late.script"});
    Process second({TELEPHONE, "play", SCRIPTS "/number-103-answers-late.script"});

    EXPECT_EQ(first.wait(), 0) << first.output();
    EXPECT_EQ(second.wait(), 0) << second.output();
}

TEST(Scripts, Signal_EndsAScriptAtOnce)
{
    Process process({TELEPHONE, "--log-level", "0", "play", "-"});
    process.write("say playing\nwait CallHeldEvent within 600\n");
    process.endInput();
    process.readUntil("playing\n");

    process.signal(SIGTERM);

    EXPECT_EQ(process.wait(), 1);
    EXPECT_NE(process.output().find("ended by a signal"), std::string::npos) << process.output();
}
