#include <gtest/gtest.h>

#include "telephone/protocol/TelephoneState.h"

namespace telephone {
namespace {

using namespace std::chrono;

constexpr system_clock::time_point kNoon = sys_days(year(2026) / March / 1) + 12h;

CallStatus heldCall()
{
    CallStatus call;
    call.id = 2;
    call.line = "4711";
    call.place = "4711#2";
    call.appearance = 2;
    call.state = "held";
    call.stateNumber = 7;
    call.reason = "normal";
    call.incoming = true;
    call.party = {"sip:100@127.0.0.1:5060", "Ann"};
    call.since = kNoon + 1500ms;
    call.began = kNoon;
    call.heldHere = true;
    call.heldForConsultation = true;
    call.recording = true;
    return call;
}

LineStatus lineWithAppearances()
{
    LineStatus line;
    line.id = "4711";
    line.number = 1;
    line.registration = "registered";
    line.state = "selected";
    line.primary = true;
    line.selected = true;
    line.doNotDisturb = true;
    line.forwarding = {{3, "busy", true, "101"}, {0, "unconditional", true, ""}};
    line.agent = "logged off";
    line.ringDelay = 5;
    line.messages = MessageCountState{true, true, 3, 1};
    LineStatus appearance;
    appearance.id = "4711#1";
    appearance.number = 129;
    appearance.state = "selected";
    appearance.selected = true;
    line.appearances = {appearance};
    return line;
}

TelephoneState emptyState()
{
    TelephoneState state;
    state.start = "k3f9";
    state.time = kNoon + 2s;
    state.service = "out of service";
    return state;
}

TEST(StateJson, TelephoneWithoutAnything_HasEveryMember)
{
    EXPECT_EQ(stateJson(emptyState()),
              R"({"start":"k3f9","event":0,"time":"2026-03-01T12:00:02.000Z","domain":null,"ready":false,)"
              R"("service":"out of service","lines":[],"calls":[],"keys":[],"hook_up":false,"plugged":[],)"
              R"("muted":false,"locked":false,"store":{"path":null,"writable":true}})");
}

TEST(StateJson, EverythingThatCanBeKnown_IsThere)
{
    TelephoneState state = emptyState();
    state.event = 17;
    state.domain = "127.0.0.1:5060";
    state.ready = true;
    state.service = "in service";
    state.lines = {lineWithAppearances()};
    state.calls = {heldCall()};
    state.keys = {{1, "line", "4711", "Desk", false, {"flashing", "green"}}, {0, "Hold", "", "", false, {}}};
    state.hookUp = true;
    state.plugged = {"headset", "line"};
    state.muted = true;
    state.locked = true;
    state.store = "/home/ann/settings";
    state.storeWritable = false;

    EXPECT_EQ(
        stateJson(state),
        R"({"start":"k3f9","event":17,"time":"2026-03-01T12:00:02.000Z","domain":"127.0.0.1:5060","ready":true,)"
        R"("service":"in service","lines":[{"id":"4711","number":1,"registration":"registered",)"
        R"("state":"selected","primary":true,"selected":true,"do_not_disturb":true,)"
        R"("forwarding":[{"type":3,"name":"busy","active":true,"destination":"101"},)"
        R"({"type":0,"name":"unconditional","active":true,"destination":null}],"agent":"logged off",)"
        R"("rings":true,"ring_delay":5,"messages":{"waiting":true,"new":3,"old":1},)"
        R"("appearances":[{"id":"4711#1","number":129,"state":"selected","selected":true}]}],)"
        R"("calls":[{"id":2,"line":"4711","place":"4711#2","appearance":2,"state":"held","state_number":7,)"
        R"("over":false,"reason":"normal","incoming":true,)"
        R"("party":{"address":"sip:100@127.0.0.1:5060","name":"Ann"},"since":"2026-03-01T12:00:01.500Z",)"
        R"("began":"2026-03-01T12:00:00.000Z","held_here":true,"held_by_far_end":false,)"
        R"("held_for_consultation":true,"in_conference":false,"conference":[],"secure":false,"audio":null,"recording":true,)"
        R"("call_back_possible":false}],"keys":[{"number":1,"function":"line","target":"4711","label":"Desk",)"
        R"("shows_only":false,"lamp":{"mode":"flashing","colour":"green"}},{"number":null,"function":"Hold",)"
        R"("target":null,"label":null,"shows_only":false,"lamp":{"mode":"off","colour":"none"}}],)"
        R"("hook_up":true,"plugged":["headset","line"],"muted":true,"locked":true,)"
        R"("store":{"path":"/home/ann/settings","writable":false}})");
}

TEST(StateJson, AudioOfACall_HasItsCountsAndWhatTheFarEndReported)
{
    TelephoneState state = emptyState();
    state.calls = {heldCall()};
    state.calls.front().audio = {100, 98, 2, 3, 4, 5, 0.5, 1, 2.25, std::nullopt};

    EXPECT_NE(stateJson(state).find(
                  R"("audio":{"sent":100,"received":98,"lost":2,"jitter":0.5,"far_lost":1,"far_jitter":2.25,)"
                  R"("round_trip":null,"foreign":3,"forged":4,"replayed":5})"),
              std::string::npos);
}

TEST(StateJson, MailboxThatDoesNotCount_HasNoCounts)
{
    TelephoneState state = emptyState();
    state.lines.resize(1);
    state.lines.front().messages = MessageCountState{true, false, 0, 0};

    EXPECT_NE(stateJson(state).find(R"("messages":{"waiting":true,"new":null,"old":null})"), std::string::npos);
}

TEST(StateJson, NameFromTheNetwork_IsReplacedOrEscaped)
{
    TelephoneState state = emptyState();
    state.calls = {heldCall()};
    state.calls.front().party = {"", "M\xc3\xbcller\xff\x1b[2J"};

    EXPECT_NE(stateJson(state).find(R"("party":{"address":null,"name":"M\u00fcller\ufffd\u001b[2J"})"),
              std::string::npos);
}

TEST(StateJson, TimeBeforeTheEpoch_IsADate)
{
    TelephoneState state = emptyState();
    state.time = sys_days(year(1969) / December / 31) + 23h + 59min + 59s + 999ms;

    EXPECT_NE(stateJson(state).find(R"("time":"1969-12-31T23:59:59.999Z")"), std::string::npos);
}

}  // namespace
}  // namespace telephone
