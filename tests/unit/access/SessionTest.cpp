#include "telephone/access/Session.h"

#include <fstream>
#include <sstream>

#include <gtest/gtest.h>
#include <poll.h>

#include "TelephoneDouble.h"
#include "telephone/base/Version.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/Refusals.h"
#include "telephone/framework/WakeUp.h"
#include "tests/doubles/TemporaryFolder.h"

using namespace telephone;

namespace {

constexpr char const* kKinds[] = {"request", "answer", "event", "finished", "error",
                                  "result",  "reason", "gap",   "state"};

class SessionTest : public testing::Test
{
protected:
    // The replies to a text, "kind text" each.
    std::string replies(std::string const& text)
    {
        written_.clear();
        session_.handle(text, sink());
        return written_;
    }

    // The next events that come.
    std::string events()
    {
        written_.clear();
        pollfd query{woken_.descriptor(), POLLIN, 0};
        while (written_.empty() && poll(&query, 1, 10000) == 1) {
            woken_.clear();
            while (session_.takeEvents(10, sink())) {
            }
        }
        return written_;
    }

    MessageSink sink()
    {
        return [this](Message const& each) {
            written_ += kKinds[static_cast<int>(each.kind)];
            written_ += each.number == 0 ? "" : " " + std::to_string(each.number);
            written_ += " " + std::string(each.text) + "\n";
        };
    }

    TelephoneDouble telephone_;
    WakeUp woken_;
    Session session_{"application-1", telephone_.services(), 100, [this] { woken_.signal(); }};
    std::string written_;
};

}  // namespace

TEST_F(SessionTest, FullRequest_IsSentUnchangedAndAnswered)
{
    EXPECT_EQ(replies("<Method>holdcall</Method> # no comment"), "request <Method>holdcall</Method> # no comment\n"
                                                                 "answer sfiSuccess\n"
                                                                 "finished \n");
}

TEST_F(SessionTest, ShortRequest_IsSentInFull)
{
    EXPECT_EQ(replies("HoldCall Line=4711 CallID=1"),
              "request <Method>HoldCall</Method><Line>4711</Line><CallID>1</CallID>\n"
              "answer sfiSuccess\n"
              "finished \n");
}

TEST_F(SessionTest, RequestWithoutAnswer_IsOnlyFinished)
{
    telephone_.invoker.answer = [](std::string const&) { return ""; };

    EXPECT_EQ(replies("<Method>callbackDOFeatureCallID</Method>"), "request <Method>callbackDOFeatureCallID</Method>\n"
                                                                   "finished \n");
}

TEST_F(SessionTest, Reasons_FollowTheAnswerWhenTheyAreOn)
{
    telephone_.invoker.answer = [](std::string const&) {
        reportRefusal("test", {RefusalKind::kNotFound, "there is no call 7"});
        return "sfiFailure";
    };
    std::string const request = "<Method>HoldCall</Method><Line>4711</Line><CallID>7</CallID>";
    EXPECT_EQ(replies(request), "request " + request + "\nanswer sfiFailure\nfinished \n");

    EXPECT_EQ(replies("reasons on"), "result \n");
    telephone_.controls.present.lines.emplace_back().id = "4711";
    EXPECT_EQ(replies(request), "request " + request +
                                    "\nanswer sfiFailure\nreason line 4711 has no call 7; the telephone has no "
                                    "calls\nfinished \n");
}

TEST_F(SessionTest, StrictSession_RefusesBeforeTheService)
{
    EXPECT_EQ(replies("strict on"), "result \n");

    EXPECT_EQ(replies("<Method>HoldCal</Method>"), "error there is no request HoldCal (did you mean HoldCall?)\n");
    EXPECT_TRUE(telephone_.invoker.requests.empty());

    EXPECT_EQ(replies("strict off"), "result \n");
    EXPECT_EQ(replies("<Method>HoldCal</Method>"), "request <Method>HoldCal</Method>\nanswer sfiSuccess\nfinished \n");
}

TEST_F(SessionTest, Commands_ReachTheTelephone)
{
    for (char const* const line : {"press 1",
                                   "release 1",
                                   "hook up",
                                   "hook down",
                                   "plug headset",
                                   "plug headset out",
                                   "unplug headset",
                                   "lock",
                                   "unlock",
                                   "record on 4711",
                                   "record off 4711",
                                   "store set agent-state \"not ready\"",
                                   "call 4711 from 555 name \"Ann B\"",
                                   "call 4711 from 555",
                                   "message 4711 new 3 old 1",
                                   "registrar off",
                                   "exchange registrar refuse 403",
                                   "exchange registrar forget",
                                   "exchange 107 does ring 2s, answer",
                                   "exchange 107 call 4711, hang-up",
                                   "fault lamps stuck at 3s for 2s",
                                   "fault off lamps stuck",
                                   "fault off"}) {
        EXPECT_EQ(replies(line), "result \n") << line;
    }

    EXPECT_EQ(telephone_.controls.asked, (std::vector<std::string>{"press 1",
                                                                   "release 1",
                                                                   "hook up",
                                                                   "hook down",
                                                                   "plug headset in",
                                                                   "plug headset out",
                                                                   "plug headset out",
                                                                   "lock",
                                                                   "unlock",
                                                                   "record on 4711",
                                                                   "record off 4711",
                                                                   "set agent-state not ready",
                                                                   "call 4711 from 555 name Ann B",
                                                                   "call 4711 from 555 name ",
                                                                   "messages 4711 3 1",
                                                                   "registrar away",
                                                                   "registrar refuse 403",
                                                                   "registrar forget",
                                                                   "107 does ring 2s, answer",
                                                                   "107 plays call 4711, hang-up",
                                                                   "fault lamps stuck at 3s for 2s",
                                                                   "fault off lamps stuck",
                                                                   "fault off "}));
}

TEST_F(SessionTest, NumbersOfTheExchange_AreAResult)
{
    EXPECT_EQ(replies("exchange numbers"), "result 100 answers\n107 ring 2s, answer\n");
}

TEST_F(SessionTest, SavedStates_AreCompared)
{
    TemporaryFolder const folder;
    std::string const first = folder.file("first");
    telephone_.controls.present.start = "k3f9x2ab";
    telephone_.controls.present.service = "in service";

    EXPECT_EQ(replies("state save " + first), "result \n");
    EXPECT_EQ(contentOf(first), stateJson(telephone_.controls.state()) + "\n");
    EXPECT_EQ(replies("state diff now " + first), "result no difference\n");
    telephone_.controls.present.locked = true;
    telephone_.controls.present.hookUp = true;
    EXPECT_EQ(replies("state diff " + first + " now"), "result hook up: no → yes\nlocked: no → yes\n");
}

TEST_F(SessionTest, StateFileThatCannotBeUsed_IsRefused)
{
    TemporaryFolder const folder;
    writeFile(folder.file("script"), "press 1\n");

    EXPECT_EQ(replies("state save /nowhere/state"), "error cannot write /nowhere/state: No such file or directory\n");
    EXPECT_EQ(replies("state save /dev/full"), "error cannot write /dev/full: No space left on device\n");
    EXPECT_EQ(replies("state diff now /nowhere/state"),
              "error cannot read /nowhere/state: No such file or directory\n");
    EXPECT_EQ(replies("state diff " + folder.file("script") + " now"),
              "error the first is not a state of a telephone, as the command state returns it\n");
}

TEST_F(SessionTest, TablesOfTheState_AreResults)
{
    LineStatus line;
    line.id = "4711";
    line.state = "held";
    line.registration = "registered";
    CallStatus call;
    call.id = 2;
    call.place = "4711";
    call.state = "held";
    call.party.address = "sip:100@127.0.0.1:5060";
    KeyState key;
    key.number = 1;
    key.function = "line";
    key.target = "4711";
    key.lamp = {"steady", "green"};
    TelephoneState& state = telephone_.controls.present;
    state.domain = "127.0.0.1:5060";
    state.lines = {line};
    state.calls = {call};
    state.keys = {key};

    EXPECT_EQ(replies("lines"), "result 4711     held              registered\n");
    EXPECT_EQ(replies("calls"), "result 4711     2     held              to 100, 0:00\n");
    EXPECT_EQ(replies("keys"), "result   1  line                           4711\n");
    EXPECT_EQ(replies("lamps"), "result   1  line                           [======] G  steady green       held\n");
}

TEST_F(SessionTest, Raw_IsAChoiceOnlyWhereMessagesCanBeShownInWords)
{
    EXPECT_EQ(replies("raw on"), "error messages are written with their tags here already\n");

    session_.options().raw = false;
    EXPECT_EQ(replies("raw on"), "result \n");
    EXPECT_EQ(session_.options().raw, true);
    EXPECT_EQ(replies("raw off"), "result \n");
    EXPECT_EQ(session_.options().raw, false);
}

TEST_F(SessionTest, HelpWithAName_SaysWhatDescribeSays)
{
    EXPECT_EQ(replies("help press"), replies("describe press"));
    EXPECT_EQ(replies("describe press"),
              "result press: command\n  presses a key, named by number, label or function\n\n  Write   press KEY\n\n");
}

TEST_F(SessionTest, Help_ListsEveryCommandInAHundredColumns)
{
    std::istringstream list(replies("help"));
    std::size_t commandLines = 0;
    for (std::string line; std::getline(list, line);) {
        EXPECT_LE(line.size(), 100U) << line;
        commandLines += line.starts_with("  ") && line[2] != ' ' ? 1 : 0;
    }
    // And the sample of a request.
    EXPECT_EQ(commandLines, commands().size() + 1);
}

TEST_F(SessionTest, Lists_AreResults)
{
    EXPECT_EQ(replies("calls"), "result no calls\n");
    EXPECT_EQ(replies("store list"), "result agent-state = ready\n");
    EXPECT_EQ(replies("store get agent-state"), "result agent-state = ready\n");
    EXPECT_EQ(replies("say hi there"), "result hi there\n");
}

TEST_F(SessionTest, WrongLines_AreErrorsWithAHint)
{
    EXPECT_EQ(replies("HoldCal Line=4711"),
              "error no request or command HoldCal (did you mean HoldCall?); help lists them\n");
    EXPECT_EQ(replies("hepl"), "error no request or command hepl (did you mean help?); help lists them\n");
    EXPECT_EQ(replies("xyzzy"), "error no request or command xyzzy; help lists them\n");
    EXPECT_EQ(replies("press"), "error KEY is missing; write it as: press KEY\n");
    EXPECT_EQ(replies("press 99"), "error no key 99\n");
    EXPECT_EQ(replies("hook off"), "error \"off\" is not up or down; write it as: hook up|down\n");
    EXPECT_EQ(replies("log 7"), "error \"7\" is not a number from 0 to 6\n");
    EXPECT_EQ(replies("message 4711 new many old 1"), "error \"many\" is not a number from 0 to 9999\n");
    EXPECT_EQ(replies("store get x"), "error no setting x\n");
    EXPECT_EQ(replies(""), "error the message is empty\n");
    EXPECT_EQ(replies("say \"hi"), "error a quote \" is not closed\n");
}

TEST_F(SessionTest, Describe_TakesAValueOfAnEnumeration)
{
    EXPECT_EQ(replies("describe CallState 6").substr(0, 29), "result CallState 6: connected");
}

TEST_F(SessionTest, Quit_EndsTheTelephone)
{
    EXPECT_EQ(replies("quit"), "result \n");

    EXPECT_EQ(telephone_.ends, 1);
}

TEST_F(SessionTest, Hello_IdentifiesTheTelephone)
{
    telephone_.controls.present.start = "abc";
    telephone_.controls.present.ready = true;
    telephone_.controls.present.domain = "127.0.0.1:5060";

    EXPECT_EQ(replies("hello dialler"), R"(result {"telephone":"reference telephone","version":")" +
                                            std::string(kTelephoneVersion) +
                                            R"(","protocol":1,"start":"abc","ready":true,)"
                                            R"("domain":"127.0.0.1:5060"})"
                                            "\n");
    EXPECT_EQ(session_.name(), "dialler");
    EXPECT_EQ(replies("hello " + std::string(41, 'x')), "error a name has at most 40 bytes\n");
}

TEST_F(SessionTest, Hello_WithoutAName_KeepsTheName)
{
    (void)replies("hello");
    EXPECT_EQ(session_.name(), "application-1");

    EXPECT_EQ(replies("hello " + std::string(40, 'x')).substr(0, 6), "result");
    EXPECT_EQ(session_.name(), std::string(40, 'x'));
}

TEST_F(SessionTest, NumbersAtTheirLimits_AreTaken)
{
    EXPECT_EQ(replies("message 4711 new 9999 old 9999"), "result \n");
    EXPECT_EQ(replies("message 4711 new 0 old 0"), "result \n");
    EXPECT_EQ(telephone_.controls.asked, (std::vector<std::string>{"messages 4711 9999 9999", "messages 4711 0 0"}));
    EXPECT_EQ(replies("message 4711 new 10000 old 1"), "error \"10000\" is not a number from 0 to 9999\n");
    EXPECT_EQ(replies("message 4711 new 1 old 10000"), "error \"10000\" is not a number from 0 to 9999\n");
    EXPECT_EQ(replies("message 4711 new x old y"), "error \"x\" is not a number from 0 to 9999\n");

    EXPECT_EQ(replies("log 6"), "result \n");
    EXPECT_EQ(replies("log 0"), "result \n");
    setLogLevel(kLogInfo);
}

TEST_F(SessionTest, Reasons_EndWhenTheyAreOff)
{
    telephone_.invoker.answer = [](std::string const&) { return "sfiFailure"; };
    EXPECT_EQ(replies("reasons on"), "result \n");
    EXPECT_EQ(replies("reasons off"), "result \n");

    EXPECT_EQ(replies("<Method>HoldCall</Method>"),
              "request <Method>HoldCall</Method>\nanswer sfiFailure\nfinished \n");
}

TEST_F(SessionTest, UnknownRequest_IsOneHarmlessLineOfTheLog)
{
    TemporaryFolder const folder;
    ASSERT_TRUE(openLog(kLogWarning, folder.file("log")));
    telephone_.invoker.answer = [](std::string const&) { return "sfiFailure"; };
    (void)replies("hello \"dial\nler\"");

    (void)replies("<Method>HoldCal\x1b[2J</Method>");

    flushLog();
    std::ifstream log(folder.file("log"));
    std::string line;
    std::getline(log, line);
    EXPECT_EQ(line.substr(24),
              "warning [applications] dial\\x0aler sent an unknown request: HoldCal\\x1b[2J (did you mean HoldCall?)");
    EXPECT_FALSE(std::getline(log, line));
    ASSERT_TRUE(openLog(kLogWarning, ""));
}

TEST_F(SessionTest, UnknownRequest_IsLoggedIfItFailsWithItsFirst60Letters)
{
    TemporaryFolder const folder;
    ASSERT_TRUE(openLog(kLogWarning, folder.file("log")));

    (void)replies("<Method>Unknown</Method>");
    telephone_.invoker.answer = [](std::string const&) { return "sfiFailure"; };
    (void)replies("<Method>HoldCall</Method>");
    (void)replies("<Method>" + std::string(61, 'x') + "</Method>");

    flushLog();
    EXPECT_EQ(contentOf(folder.file("log")).substr(24),
              "warning [applications] application-1 sent an unknown request: " + std::string(60, 'x') + "\n");
    ASSERT_TRUE(openLog(kLogWarning, ""));
}

TEST_F(SessionTest, Subscribe_NumbersTheSessionsOwnEvents)
{
    EXPECT_EQ(replies("<Method>Subscribe</Method>"),
              "request <Method>Subscribe</Method>\nanswer sfiSuccess\nfinished \n");
    telephone_.held(2);

    EXPECT_EQ(events(), "event 1 <Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>2</CallID>\n");
}

TEST_F(SessionTest, Events_AreNumberedAcrossTheTelephone)
{
    telephone_.held(1);
    std::string const start = telephone_.history->start();

    EXPECT_EQ(replies("events after 0 of " + start), "result {\"start\":\"" + start + "\",\"after\":0}\n");
    EXPECT_EQ(events(), "event 1 <Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>1</CallID>\n");
    EXPECT_EQ(replies("events after 1"), "result {\"start\":\"" + start + "\",\"after\":1}\n");
    telephone_.held(2);
    EXPECT_EQ(replies("events off"), "result \n");
    EXPECT_FALSE(session_.takeEvents(10, sink()));
}

TEST_F(SessionTest, EventsOfALine_AreThoseOfThatLine)
{
    telephone_.controls.present.lines.emplace_back().id = "4711";
    telephone_.controls.present.lines.emplace_back().id = "4712";
    telephone_.held(1);

    (void)replies("events after 0 line 4711");
    EXPECT_EQ(events(), "event 1 <Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>1</CallID>\n");
    (void)replies("events after 0 line 4712");

    written_.clear();
    while (session_.takeEvents(10, sink())) {
    }
    EXPECT_EQ(written_, "");
}

TEST_F(SessionTest, EventsOfAnotherStart_BeginWithAGap)
{
    telephone_.held(1);

    EXPECT_EQ(replies("events after 1 of elsewhere"),
              "result {\"start\":\"" + telephone_.history->start() + "\",\"after\":0}\n");

    EXPECT_EQ(events().substr(0, 36), "gap {\"first\":1,\"last\":1}\nstate 1 {\"s");
}

TEST_F(SessionTest, WrongSelection_IsRefused)
{
    telephone_.controls.present.lines.emplace_back().id = "4711";
    telephone_.controls.present.lines.emplace_back().id = "4712";
    telephone_.controls.present.lines.back().appearances.emplace_back().id = "4712#1";
    EXPECT_EQ(replies("events line 4712#1,4799"), "error there is no line 4799; the lines are 4711 and 4712\n");
    EXPECT_EQ(replies("events only CallHeldEvnt"), "error no event CallHeldEvnt (did you mean CallHeldEvent?)\n");
    EXPECT_EQ(replies("events after now"), "error \"now\" is not a number from 0 to 9223372036854775807\n");
}

TEST_F(SessionTest, Faults_AreAResult)
{
    EXPECT_EQ(replies("faults"), "result active: store full\n");
}
