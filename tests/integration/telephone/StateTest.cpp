// The state of a whole telephone at its built-in exchange. Each state that a test reads is also checked against
// docs/state.schema.json.
#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Process.h"
#include "platform/sfi/SfiTypes.h"
#include "telephone/Telephone.h"
#include "telephone/access/Session.h"
#include "telephone/access/TelephoneControls.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/framework/EventHistory.h"
#include "telephone/framework/Log.h"
#include "telephone/protocol/MessageText.h"
#include "telephone/protocol/TelephoneState.h"
#include "telephone/time/SteadyClock.h"
#include "telephone/time/Thread.h"
#include "telephone/time/VirtualTime.h"
#include "telephone/time/Waiting.h"
#include "tests/doubles/TemporaryFolder.h"
#include "tests/helpers/TestTime.h"

namespace telephone {
namespace {

using namespace std::chrono_literals;
using test::eventually;

constexpr auto kDeadline = 20s;

std::string replaced(std::string text, std::string const& what, std::string const& with)
{
    for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size())) {
        text.replace(at, what.size(), with);
    }
    return text;
}

CallStatus callOf(TelephoneState const& state, int id)
{
    for (CallStatus const& each : state.calls) {
        if (each.id == id) {
            return each;
        }
    }
    return {};
}

std::string lampOf(TelephoneState const& state, int key)
{
    for (KeyState const& each : state.keys) {
        if (each.number == key) {
            return each.lamp.mode;
        }
    }
    return "no such key";
}

class State : public ::testing::Test
{
protected:
    Configuration configuration_ = Configuration::standard();

    // The telephone as configured, activated.
    void start()
    {
        setLogLevel(kLogOff);
        telephone_ = std::make_unique<Telephone>(configuration_, LIBRARY);
        session_ = std::make_unique<Session>("test", telephone_->sessions([] {}), 0, [] {});
        ASSERT_FALSE(state().ready);
        ASSERT_TRUE(telephone_->activate());
        ASSERT_TRUE(state().ready);
    }

    void TearDown() override
    {
        if (telephone_ == nullptr) {
            return;
        }
        session_.reset();
        telephone_->stop();
        Ended const checked = run({PYTHON, CHECK_STATE, SCHEMA}, states_);
        EXPECT_EQ(checked.status, 0) << checked.output;
    }

    TelephoneControls& controls() { return session_->services().telephone; }
    EventHistory& history() { return session_->services().history; }

    TelephoneState state()
    {
        TelephoneState const state = controls().state();
        states_ += stateJson(state) + "\n";
        return state;
    }

    // The first state for which the condition holds; for changes that no event reports.
    TelephoneState stateWhen(std::function<bool(TelephoneState const&)> const& condition)
    {
        EXPECT_TRUE(eventually([&] { return condition(controls().state()); }, kDeadline))
            << "the state did not come; instead: " << stateJson(controls().state());
        return state();
    }

    std::string request(std::string const& method, std::string const& elements = {})
    {
        std::string answer;
        session_->handle("<Method>" + method + "</Method>" + elements, [&answer](Message const& message) {
            answer = message.kind == MessageKind::kAnswer ? message.text : answer;
        });
        return answer;
    }

    static std::string lineAndCall(std::string const& line, int id)
    {
        return "<Line>" + line + "</Line><CallID>" + std::to_string(id) + "</CallID>";
    }

    void call(int id, std::string const& number, std::string const& line = "4711")
    {
        ASSERT_EQ(
            request("OutgoingCallMakeRequest", lineAndCall(line, id) + "<Destination>" + number + "</Destination>"),
            "sfiSuccess");
    }

    void connect(int id, std::string const& number)
    {
        call(id, number);
        event("<CallID>" + std::to_string(id) + "</CallID><CallState>6</CallState>");
    }

    void hold(int id, std::string const& line = "4711")
    {
        ASSERT_EQ(request("HoldCall", lineAndCall(line, id) + "<HoldCallReason>5</HoldCallReason>"), "sfiSuccess");
    }

    void retrieve(int id) { ASSERT_EQ(request("RetrieveCall", lineAndCall("4711", id)), "sfiSuccess"); }

    void clear(int id)
    {
        ASSERT_EQ(request("CallClearRequest", lineAndCall("4711", id)), "sfiSuccess");
        event("<CallID>" + std::to_string(id) + "</CallID><CallState>0</CallState>");
    }

    // The next event that contains the text; earlier ones are skipped.
    void event(std::string const& text)
    {
        auto const comes = [this, &text] {
            takeEvents();
            while (read_ < events_.size()) {
                if (events_[read_++]->text.find(text) != std::string::npos) {
                    return true;
                }
            }
            return false;
        };
        EXPECT_TRUE(eventually(comes, kDeadline)) << "there is no event with " << text;
    }

    void takeEvents()
    {
        auto const portion = history().after(events_.size(), 100000);
        ASSERT_EQ(portion.missed, 0U);
        events_.insert(events_.end(), portion.events.begin(), portion.events.end());
    }

    std::unique_ptr<Telephone> telephone_;
    std::unique_ptr<Session> session_;
    EventHistory::Events events_;  // all, from the first
    std::size_t read_ = 0;
    std::string states_;
};

// --- everything

TEST_F(State, FreshTelephone_IsComplete)
{
    start();
    TelephoneState state =
        stateWhen([](TelephoneState const& now) { return now.lines.front().messages && now.lines.back().messages; });
    std::string const domain = state.domain;
    state.start = "k3f9";
    state.event = 17;
    state.time = {};

    EXPECT_EQ(
        replaced(stateJson(state), domain, "DOMAIN"),
        R"({"start":"k3f9","event":17,"time":"1970-01-01T00:00:00.000Z","domain":"DOMAIN","ready":true,)"
        R"("service":"in service","lines":[{"id":"4711","number":1,"registration":"registered","state":"idle",)"
        R"("primary":true,"selected":false,"do_not_disturb":false,"forwarding":[],"agent":"logged off","rings":true,)"
        R"("ring_delay":0,"messages":{"waiting":false,"new":0,"old":0},"appearances":[]},{"id":"4712","number":2,)"
        R"("registration":"registered","state":"idle","primary":false,"selected":false,"do_not_disturb":false,)"
        R"("forwarding":[],"agent":"logged off","rings":true,"ring_delay":0,"messages":{"waiting":false,"new":0,)"
        R"("old":0},"appearances":[]}],"calls":[],"keys":[)"
        R"({"number":1,"function":"line","target":"4711","label":"4711","shows_only":false,"lamp":{"mode":"off","colour":"none"}},)"
        R"({"number":2,"function":"line","target":"4712","label":"4712","shows_only":false,"lamp":{"mode":"off","colour":"none"}},)"
        R"({"number":3,"function":"dss","target":"4712","label":"Desk 4712","shows_only":false,"lamp":{"mode":"off","colour":"none"}},)"
        R"({"number":4,"function":"blf","target":"102","label":"Watch 102","shows_only":false,"lamp":{"mode":"off","colour":"none"}},)"
        R"({"number":5,"function":"forwarding","target":null,"label":"Forward","shows_only":false,"lamp":{"mode":"off","colour":"none"}},)"
        R"({"number":6,"function":"dnd","target":null,"label":"Do not disturb","shows_only":false,"lamp":{"mode":"off","colour":"none"}},)"
        R"({"number":7,"function":"hold","target":null,"label":"Hold","shows_only":false,"lamp":{"mode":"off","colour":"none"}},)"
        R"({"number":8,"function":"mute","target":null,"label":"Mute","shows_only":false,"lamp":{"mode":"off","colour":"none"}},)"
        R"({"number":9,"function":"headset","target":null,"label":"Headset","shows_only":false,"lamp":{"mode":"off","colour":"none"}},)"
        R"({"number":10,"function":"messages","target":null,"label":"Messages","shows_only":false,"lamp":{"mode":"off","colour":"none"}},)"
        R"({"number":11,"function":"toggle","target":"1","label":"Feature 1","shows_only":false,"lamp":{"mode":"off","colour":"none"}},)"
        R"({"number":12,"function":"release","target":null,"label":"Release","shows_only":false,"lamp":{"mode":"off","colour":"none"}},)"
        R"({"number":13,"function":"preview","target":null,"label":"Preview","shows_only":false,"lamp":{"mode":"off","colour":"none"}},)"
        R"({"number":14,"function":"ignore","target":null,"label":"Ignore","shows_only":false,"lamp":{"mode":"off","colour":"none"}},)"
        R"({"number":15,"function":"transfer","target":null,"label":"Transfer","shows_only":false,"lamp":{"mode":"off","colour":"none"}},)"
        R"({"number":null,"function":"Hold","target":null,"label":null,"shows_only":false,"lamp":{"mode":"off","colour":"none"}},)"
        R"({"number":null,"function":"SecondAlert","target":null,"label":null,"shows_only":false,"lamp":{"mode":"off","colour":"none"}}],)"
        R"("hook_up":false,"plugged":[],"muted":false,"locked":false,"store":{"path":null,"writable":true}})");
}

TEST_F(State, SettingsAndSwitches_AreShown)
{
    start();

    EXPECT_EQ(request("SetDoNotDisturb", "<Line>4711</Line><doNotDisturbOn>1</doNotDisturbOn>"), "sfiSuccess");
    EXPECT_EQ(request("SetAgentState", "<Line>4711</Line><agentState>ready</agentState>"), "sfiSuccess");
    EXPECT_EQ(request("SetMicrophoneMute", "<Status>1</Status>"), "sfiSuccess");
    EXPECT_EQ(request("setForwardingConfiguration",
                      "<Line>4711</Line><fwType>3</fwType><status>1</status><uri>101</uri>"
                      "<cfnrRingCount>3</cfnrRingCount><forceQORAUpdate>0</forceQORAUpdate>"),
              "sfiSuccess");
    EXPECT_TRUE(controls().set("forwarding-alternative", "103"));
    EXPECT_TRUE(controls().plug("headset", true));
    EXPECT_TRUE(controls().plug("line", true));
    EXPECT_TRUE(controls().lock(true));

    TelephoneState const now = state();
    LineStatus const& line = now.lines.front();
    EXPECT_TRUE(line.doNotDisturb);
    EXPECT_EQ(line.agent, "ready");
    ASSERT_EQ(line.forwarding.size(), 2U);
    EXPECT_EQ(line.forwarding[0].name, "busy");
    EXPECT_TRUE(line.forwarding[0].active);
    EXPECT_EQ(line.forwarding[0].destination, "101");
    EXPECT_EQ(line.forwarding[1].name, "alternative");
    EXPECT_EQ(line.forwarding[1].destination, "103");
    EXPECT_TRUE(now.lines.back().forwarding.empty());
    EXPECT_EQ(now.plugged, (std::vector<std::string>{"headset", "line"}));
    EXPECT_TRUE(now.muted);
    EXPECT_TRUE(now.locked);
}

TEST_F(State, MessagesInTheMailbox_AreCounted)
{
    start();

    ASSERT_TRUE(controls().setMessages("4711", 3, 1));
    event("<Method>messageWaitingEvent</Method><LineID>4711</LineID><type>1</type><new_messages>3</new_messages>");

    auto const messages = state().lines.front().messages;
    ASSERT_TRUE(messages);
    EXPECT_TRUE(messages->waiting);
    EXPECT_TRUE(messages->counted);
    EXPECT_EQ(messages->unread, 3);
    EXPECT_EQ(messages->read, 1);
}

TEST_F(State, StoreThatWasRemoved_IsNotWritable)
{
    TemporaryFolder const folder;
    configuration_.store.path = folder.file("settings");
    start();
    EXPECT_EQ(state().store, folder.file("settings"));
    EXPECT_TRUE(state().storeWritable);

    std::filesystem::remove(folder.file("settings"));
    EXPECT_FALSE(controls().lock(true));

    EXPECT_FALSE(state().storeWritable);
    EXPECT_FALSE(state().locked);
}

// --- what events alone do not tell

TEST_F(State, ConferenceRetrieved_IsConferenceAlthoughEachCallReportsRetrieved)
{
    start();
    connect(1, "100");
    ASSERT_EQ(request("Consult", "<Line>4711</Line><CallID>2</CallID><Destination>103</Destination>"), "sfiSuccess");
    event("<CallID>2</CallID><CallState>6</CallState>");
    EXPECT_TRUE(callOf(state(), 1).heldForConsultation);
    EXPECT_EQ(state().lines.front().state, "active");
    ASSERT_EQ(request("ConferenceCall", "<Line>4711</Line><activeCall>2</activeCall><heldCall>1</heldCall>"
                                        "<feature>3</feature>"),
              "sfiSuccess");
    event("<Method>FeatureSuccessEvent</Method><LineID>4711</LineID><CallID>1</CallID><Feature>3</Feature>");
    hold(1);
    event("<Method>CallHeldEvent</Method>");
    event("<Method>CallHeldEvent</Method>");
    EXPECT_TRUE(callOf(state(), 1).inConference);
    EXPECT_TRUE(callOf(state(), 2).heldHere);

    retrieve(1);
    event("<Method>CallRetrievedEvent</Method>");
    event("<Method>CallRetrievedEvent</Method>");

    TelephoneState const now = state();
    EXPECT_EQ(callOf(now, 1).state, "conference");
    EXPECT_EQ(now.lines.front().state, "conference");
    for (int const id : {1, 2}) {
        CallStatus const call = callOf(now, id);
        EXPECT_TRUE(call.inConference);
        EXPECT_FALSE(call.heldHere);
        ASSERT_EQ(call.conference.size(), 1U);
        EXPECT_EQ(call.conference.front().address, callOf(now, 3 - id).party.address);
    }
}

TEST_F(State, HandsetLifted_SelectsALineWithoutAnEvent)
{
    start();
    stateWhen([](TelephoneState const& now) { return now.lines.front().messages && now.lines.back().messages; });
    TelephoneState const before = state();
    EXPECT_FALSE(before.hookUp);

    ASSERT_TRUE(controls().hook(true));

    TelephoneState const now = stateWhen([](TelephoneState const& each) { return each.lines.front().selected; });
    EXPECT_TRUE(now.hookUp);
    EXPECT_EQ(now.lines.front().state, "selected");
    EXPECT_FALSE(now.lines.back().selected);
    EXPECT_EQ(now.event, before.event);
}

TEST_F(State, BusyCall_IsOverAndListedUntilItsCallBackIsSet)
{
    start();
    call(1, "101");
    event("<CallID>1</CallID><CallState>13</CallState>");

    TelephoneState const now = state();
    ASSERT_EQ(now.calls.size(), 1U);
    CallStatus const& busy = now.calls.front();
    EXPECT_TRUE(busy.over);
    EXPECT_TRUE(busy.callBackPossible);
    EXPECT_EQ(busy.id, 1);
    EXPECT_EQ(busy.state, "busy");
    EXPECT_EQ(busy.stateNumber, 13);
    EXPECT_EQ(busy.reason, "busy");
    EXPECT_EQ(busy.line, "4711");
    EXPECT_LE(busy.began, busy.since);
    EXPECT_EQ(now.lines.front().state, "idle");

    ASSERT_EQ(request("ActivateCallbackBusy", "<Line>4711</Line><CallID>1</CallID>"), "sfiSuccess");

    EXPECT_TRUE(state().calls.empty());
}

TEST_F(State, CallThatNobodyAnswered_CanBeCalledBackWhileItRingsAndAfterwards)
{
    start();
    call(1, "102");
    event("<CallID>1</CallID><CallState>3</CallState>");
    EXPECT_TRUE(callOf(state(), 1).callBackPossible);
    EXPECT_FALSE(callOf(state(), 1).over);
    clear(1);

    CallStatus const unanswered = callOf(state(), 1);
    EXPECT_TRUE(unanswered.over);
    EXPECT_TRUE(unanswered.callBackPossible);
    EXPECT_EQ(unanswered.state, "idle");
    EXPECT_EQ(unanswered.reason, "cancelled");

    ASSERT_EQ(request("ActivateCallbackRinging", "<Line>4711</Line><CallID>1</CallID>"), "sfiSuccess");
    EXPECT_TRUE(state().calls.empty());
}

TEST_F(State, CallOfTheSameId_HidesTheOneThatIsOver)
{
    start();
    call(1, "101");
    event("<CallID>1</CallID><CallState>13</CallState>");

    connect(1, "100");

    TelephoneState const now = state();
    ASSERT_EQ(now.calls.size(), 1U);
    EXPECT_EQ(now.calls.front().state, "connected");
    EXPECT_FALSE(now.calls.front().callBackPossible);
}

TEST_F(State, AnsweredCall_IsGoneWhenItIsOver)
{
    start();
    connect(1, "100");
    clear(1);

    EXPECT_TRUE(state().calls.empty());
}

TEST_F(State, DarkLamp_IsAnIdleLineOrOneOutOfService)
{
    start();
    EXPECT_EQ(lampOf(state(), 1), "off");
    EXPECT_EQ(state().lines.front().state, "idle");

    ASSERT_EQ(request("SetServiceState", "<state>sfiServiceOutOfService</state>"), "sfiSuccess");
    event("<Method>RegistrationStateChangeEvent</Method><LineID>4711</LineID><CallID>0</CallID>"
          "<Registered>0</Registered>");

    TelephoneState const now = state();
    EXPECT_EQ(lampOf(now, 1), "off");
    EXPECT_EQ(now.lines.front().state, "out of service");
    EXPECT_EQ(now.lines.front().registration, "not registered");
    EXPECT_EQ(now.service, "out of service");
}

// --- calls

TEST_F(State, CallBetweenOwnLines_SaysWhoHoldsIt)
{
    start();
    call(1, "4712");
    event("<CallID>1001</CallID><CallState>5</CallState>");
    ASSERT_EQ(request("AnswerCall", "<Line>4712</Line><CallID>1001</CallID>"), "sfiSuccess");
    event("<CallID>1</CallID><CallState>6</CallState>");
    event("<CallID>1001</CallID><CallState>6</CallState>");

    hold(1001, "4712");
    event("<CallID>1</CallID><CallState>8</CallState>");
    event("<Method>CallHeldEvent</Method><LineID>4712</LineID>");

    EXPECT_TRUE(callOf(state(), 1).heldByFarEnd);
    EXPECT_FALSE(callOf(state(), 1).heldHere);
    EXPECT_EQ(state().lines.front().state, "active");
    EXPECT_EQ(state().lines.back().state, "held");

    hold(1);
    event("<Method>CallHeldEvent</Method><LineID>4711</LineID>");

    EXPECT_EQ(callOf(state(), 1).state, "held by both");
    EXPECT_TRUE(callOf(state(), 1).heldByFarEnd);
    EXPECT_TRUE(callOf(state(), 1).heldHere);
    EXPECT_EQ(state().lines.front().state, "held");
}

TEST_F(State, IncomingCallOnAnAppearance_HasItsPlaceAndTimes)
{
    configuration_.lines[1].appearances = 2;
    start();
    auto const before = wallTime();
    call(1, "4712");
    event("<Method>CallStateChangeEvent</Method><LineID>4712#1</LineID><CallID>1001</CallID><CallState>5</CallState>");

    TelephoneState const now = state();
    CallStatus const incoming = callOf(now, 1001);
    EXPECT_EQ(incoming.line, "4712");
    EXPECT_EQ(incoming.place, "4712#1");
    EXPECT_EQ(incoming.appearance, 1);
    EXPECT_EQ(incoming.state, "ringing");
    EXPECT_TRUE(incoming.incoming);
    EXPECT_EQ(incoming.party.address, "sip:4711@" + now.domain);
    EXPECT_LE(before, incoming.began);
    EXPECT_LE(incoming.began, incoming.since);
    EXPECT_LE(incoming.since, now.time);
    LineStatus const& line = now.lines.back();
    EXPECT_EQ(line.state, "ringing");
    ASSERT_EQ(line.appearances.size(), 2U);
    EXPECT_EQ(line.appearances[0].id, "4712#1");
    EXPECT_EQ(line.appearances[0].state, "ringing");
    EXPECT_EQ(line.appearances[1].id, "4712#2");
    EXPECT_EQ(line.appearances[1].state, "idle");

    ASSERT_EQ(request("AnswerCall", "<Line>4712</Line><CallID>1001</CallID>"), "sfiSuccess");
    event("<CallID>1001</CallID><CallState>6</CallState>");

    CallStatus const answered = callOf(state(), 1001);
    EXPECT_EQ(answered.began, incoming.began);
    EXPECT_GT(answered.since, incoming.since);
}

TEST_F(State, RecordedCall_SaysSoWhileItIsRecorded)
{
    TemporaryFolder const folder;
    configuration_.recording.folder = folder.file("");
    start();
    connect(1, "100");
    EXPECT_FALSE(callOf(state(), 1).recording);

    ASSERT_TRUE(controls().record("4711", true));
    EXPECT_TRUE(callOf(state(), 1).recording);

    ASSERT_TRUE(controls().record("4711", false));
    EXPECT_FALSE(callOf(state(), 1).recording);
}

// --- one moment

// The states of calls, by id, as an application knows them that follows the events from the first.
class FollowedCalls
{
public:
    void follow(EventText const& event)
    {
        std::string_view const method = event.description->method;
        if (event.call().empty()) {
            return;
        }
        int const id = std::stoi(std::string(event.call()));
        if (method == "CallStateChangeEvent") {
            states_[id] = std::stoi(std::string(event.value("CallState")));
        } else if (method == "CallHeldEvent") {
            states_[id] = sfiCallStateHeld;
        } else if (method == "CallRetrievedEvent") {
            states_[id] = sfiCallStateConnected;
        }
        std::erase_if(states_, [](auto const& each) { return each.second == sfiCallStateIdle; });
    }

    std::map<int, int> const& states() const { return states_; }

private:
    std::map<int, int> states_;
};

// Each state is what the events up to its number add up to: it lacks none, and contains none that is still to come.
TEST_F(State, StatesDuringCalls_AreWhatTheEventsUpToTheirNumberSay)
{
    start();
    std::vector<TelephoneState> states;
    std::atomic<bool> ended{false};
    Thread reader("a reader of states", [&] {
        while (!ended) {
            states.push_back(controls().state());
            if (isVirtual()) {
                sleepFor(1ms);  // the others' turn
            }
        }
    });
    for (int id = 1; id <= 20; ++id) {
        connect(id, "100");
        hold(id);
        event("<Method>CallHeldEvent</Method>");
        retrieve(id);
        event("<Method>CallRetrievedEvent</Method>");
        clear(id);
    }
    ended = true;
    reader.join();

    FollowedCalls followed;
    std::size_t next = 0;
    for (TelephoneState const& state : states) {
        for (; next < state.event; ++next) {
            ASSERT_EQ(events_.at(next)->number, next + 1);
            followed.follow(readEvent(events_[next]->text).value());
        }
        std::map<int, int> shown;
        for (CallStatus const& call : state.calls) {
            shown[call.id] = call.stateNumber;
        }
        ASSERT_EQ(shown, followed.states()) << "at event " << state.event;
        ASSERT_EQ(state.lines.front().state == "idle", shown.empty()) << "at event " << state.event;
    }
    EXPECT_GT(states.size(), 20U);
}

}  // namespace
}  // namespace telephone
