#include "telephone/display/StateTables.h"

#include <gtest/gtest.h>

#include "DisplayTexts.h"
#include "telephone/display/PanelDrawing.h"

namespace telephone {
namespace {

using test::at;

LineStatus lineOf(std::string id, std::string state)
{
    LineStatus line;
    line.id = std::move(id);
    line.registration = "registered";
    line.state = std::move(state);
    return line;
}

CallStatus callOf(int id, std::string place, std::string state, std::string address)
{
    CallStatus call;
    call.id = id;
    call.place = std::move(place);
    call.state = std::move(state);
    call.reason = "normal";
    call.party.address = std::move(address);
    return call;
}

// The telephone of the examples: a call is ringing on 4711, one is held on 4712.
TelephoneState exampleState()
{
    TelephoneState state;
    state.time = at("12:00:04.500");
    state.lines = {lineOf("4711", "ringing"), lineOf("4712", "held")};
    state.lines[0].primary = true;
    state.calls = {callOf(1001, "4711", "ringing", "sip:4713@127.0.0.1:5060"),
                   callOf(1, "4712", "held", "sip:100@127.0.0.1:5060")};
    state.calls[0].incoming = true;
    state.calls[0].party.name = "<script>alert(1)</script>";
    state.calls[0].since = at("12:00:02.000");
    state.calls[1].since = at("12:00:00.000");
    state.calls[1].heldHere = true;
    state.keys = {{1, "line", "4711", "4711", false, {"flashing", "green"}},
                  {2, "line", "4712", "4712", false, {"fluttering", "green"}},
                  {3, "dss", "4712", "Desk 4712", false, {"fluttering", "green"}},
                  {4, "blf", "4713", "Watch 4713", false, {"steady", "red"}},
                  {5, "forwarding", "", "Forward", false, {"off", "none"}},
                  {7, "hold", "", "Hold", false, {"flashing", "green"}},
                  {0, "SecondAlert", "", "", false, {"off", "none"}}};
    return state;
}

TEST(StateTables, Lines_HaveTheirStatesAndRegistrations)
{
    EXPECT_EQ(lineRows(exampleState(), test::options()), (TableRows{
                                                             "4711     ringing           registered, primary",
                                                             "4712     held              registered",
                                                         }));
}

TEST(StateTables, Lines_SayWhatIsSetForThem)
{
    TelephoneState state;
    state.lines = {lineOf("4711", "idle")};
    LineStatus& line = state.lines[0];
    line.registration = "not registered";
    line.doNotDisturb = true;
    line.forwarding = {{3, "busy", true, "sip:102@127.0.0.1:5060"}, {0, "unconditional", false, "sip:100@127.0.0.1"}};
    line.agent = "ready";
    line.ringDelay = 3;
    line.messages = MessageCountState{true, true, 2, 1};
    line.appearances = {lineOf("4711#1", "selected")};
    line.appearances[0].registration.clear();
    line.appearances[0].selected = true;
    EXPECT_EQ(lineRows(state, test::options()),
              (TableRows{
                  "4711     idle              not registered, do-not-disturb, forwards busy to 102, agent ready, rings "
                  "after 3 s, 2 new messages",
                  "4711#1   selected          selected",
              }));
}

TEST(StateTables, Calls_HaveTheirPartiesAndAges)
{
    EXPECT_EQ(callRows(exampleState(), test::options()),
              (TableRows{
                  R"(4711     1001  ringing           from "<script>alert(1)</script>" 4713, 0:02)",
                  "4712     1     held              to 100, 0:04",
              }));
}

TEST(StateTables, Calls_SayWhatIsSpecial)
{
    TelephoneState state;
    state.time = at("13:02:05.000");
    state.calls = {callOf(2, "4711#2", "conference", "sip:100@127.0.0.1:5060"), callOf(3, "4711", "failed", "")};
    state.calls[0].since = at("12:00:02.000");
    state.calls[0].conference = {{"sip:100@127.0.0.1:5060", ""}, {"sip:4712@example.com", "Alice Example"}};
    state.calls[0].recording = true;
    state.calls[1].since = at("13:02:05.000");
    state.calls[1].reason = "not found";
    state.calls[1].over = true;
    EXPECT_EQ(callRows(state, test::options()),
              (TableRows{
                  "4711#2   2     conference        to 100, 1:02:03, with \"Alice Example\" 4712@example.com, being "
                  "recorded",
                  "4711     3     failed            to unknown, 0:00, not found, over",
              }));
}

TEST(StateTables, Lamps_AreDrawn)
{
    EXPECT_EQ(lampRows(exampleState(), test::options()),
              (TableRows{
                  R"(  1  line        "4711"             [==  ==] G  flashing green     ringing)",
                  R"(  2  line        "4712"             [= = = ] G  fluttering green   held)",
                  R"(  3  dss         "Desk 4712"        [= = = ] G  fluttering green   held)",
                  R"(  4  blf         "Watch 4713"       [======] R  steady red         busy)",
                  R"(  5  forwarding  "Forward"          [      ]    off)",
                  R"(  7  hold        "Hold"             [==  ==] G  flashing green     1 call held)",
                  R"(     SecondAlert                    [      ]    off)",
              }));
}

TEST(StateTables, Lamps_TellALineOutOfServiceFromAnIdleOne)
{
    TelephoneState state;
    state.lines = {lineOf("4711", "idle"), lineOf("4712", "idle")};
    state.lines[1].registration = "not registered";
    state.keys = {{1, "line", "4711", "4711", false, {}}, {2, "line", "4712", "4712", false, {}}};
    EXPECT_EQ(lampRows(state, test::options()),
              (TableRows{
                  R"(  1  line        "4711"             [      ]    off)",
                  R"(  2  line        "4712"             [      ]    off                not registered)",
              }));
}

TEST(StateTables, Keys_HaveFunctionLabelAndTarget)
{
    TelephoneState state = exampleState();
    state.keys[3].showsOnly = true;
    EXPECT_EQ(keyRows(state, test::options()), (TableRows{
                                                   R"(  1  line        "4711"             4711)",
                                                   R"(  2  line        "4712"             4712)",
                                                   R"(  3  dss         "Desk 4712"        4712)",
                                                   R"(  4  blf         "Watch 4713"       4713, shows only)",
                                                   R"(  5  forwarding  "Forward")",
                                                   R"(  7  hold        "Hold")",
                                               }));
}

TEST(StateTables, Panel_HasTheDisplayAboveTheKeys)
{
    EXPECT_EQ(panelRows(exampleState(), test::options()),
              (TableRows{
                  "+----------------------------------------------------------------+",
                  "| 4711     ringing           registered                          |",
                  "| 4712     held              registered                          |",
                  R"(| 1001     ringing           "<script>alert(1)</script>" 4713    |)",
                  "| 1        held              100                                 |",
                  "+----------------------------------------------------------------+",
                  "  1  4711              [==  ==] G   2  4712              [= = = ] G",
                  "  3  Desk 4712         [= = = ] G   4  Watch 4713        [======] R",
                  "  5  Forward           [      ]     7  Hold              [==  ==] G",
                  "     SecondAlert       [      ]",
                  "handset on the hook, plugged in: nothing",
              }));
}

TEST(StateTables, Panel_SaysWhatIsSpecialOfLinesAndOfTheTelephone)
{
    TelephoneState state;
    state.lines = {lineOf("4711", "idle"), lineOf("4711#2", "idle"), lineOf("4712", "idle")};
    state.lines[0].registration.clear();
    state.lines[0].selected = true;
    state.lines[0].doNotDisturb = true;
    state.lines[1].registration.clear();
    state.lines[1].messages = MessageCountState{false, true, 0, 1};
    state.lines[2].messages = MessageCountState{true, true, 2, 1};
    state.hookUp = true;
    state.plugged = {"headset", "line"};
    state.muted = true;
    EXPECT_EQ(panelRows(state, test::options()),
              (TableRows{
                  "+----------------------------------------------------------------+",
                  "| 4711     idle              selected, do-not-disturb            |",
                  "| 4711#2   idle                                                  |",
                  "| 4712     idle              registered, messages waiting        |",
                  "+----------------------------------------------------------------+",
                  "handset lifted, plugged in: headset, line, muted",
              }));
    state.muted = false;
    state.locked = true;
    state.lines.clear();
    EXPECT_EQ(panelRows(state, test::options()).back(), "handset lifted, plugged in: headset, line, locked");
}

TEST(StateTables, Lines_SayWhetherTheyRing)
{
    TelephoneState state;
    state.lines = {lineOf("1", "idle"), lineOf("2", "idle"), lineOf("3", "idle"), lineOf("4", "idle")};
    state.lines[0].rings = false;
    state.lines[0].ringDelay = 3;
    state.lines[1].ringDelay = 1;
    state.lines[2].messages = MessageCountState{true, false, 0, 0};
    state.lines[2].agent = "logged off";
    state.lines[3].messages = MessageCountState{true, true, 1, 0};
    EXPECT_EQ(lineRows(state, test::options()), (TableRows{
                                                    "1        idle              registered, silent",
                                                    "2        idle              registered, rings after 1 s",
                                                    "3        idle              registered, messages waiting",
                                                    "4        idle              registered, 1 new message",
                                                }));
}

TEST(StateTables, Calls_SayWhyTheyAreAsTheyAre)
{
    TelephoneState state;
    state.time = at("12:00:59.999");
    state.calls = {callOf(1, "4711", "busy", "sip:100@127.0.0.1:5060"), callOf(2, "4711", "held", ""),
                   callOf(3, "4711", "idle", "")};
    state.calls[0].reason = "busy";
    state.calls[0].since = at("12:00:00.000");
    state.calls[0].callBackPossible = true;
    state.calls[1].reason.clear();
    state.calls[1].since = at("11:00:59.999");
    state.calls[1].heldForConsultation = true;
    state.calls[1].secure = true;
    state.calls[2].since = at("12:01:00.000");
    EXPECT_EQ(callRows(state, test::options()),
              (TableRows{
                  "4711     1     busy              to 100, 0:59, call-back possible",
                  "4711     2     held              to unknown, 1:00:00, for a consultation, secure",
                  "4711     3     idle              to unknown, 0:00",
              }));
}

TEST(StateTables, Panel_CutsWhatIsTooLong)
{
    TelephoneState state = exampleState();
    state.lines.clear();
    state.calls = {callOf(1, "4711", "connected", "sip:" + std::string(60, '1') + "@127.0.0.1:5060")};
    state.keys = {{1, "line", "4711", std::string(30, 'x'), false, {"off", "none"}}};

    TableRows const rows = panelRows(state, test::options());

    EXPECT_EQ(rows[1], "| 1        connected         1111111111111111111111111111111111… |");
    EXPECT_EQ(rows[3], "  1  xxxxxxxxxxxxxxxx… [      ]");
}

}  // namespace
}  // namespace telephone
