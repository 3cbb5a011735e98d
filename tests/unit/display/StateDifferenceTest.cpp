#include "telephone/display/StateDifference.h"

#include <gtest/gtest.h>

#include "telephone/protocol/TelephoneState.h"

using namespace telephone;

namespace {

TelephoneState ringingTelephone()
{
    TelephoneState state;
    state.start = "k3f9x2ab";
    state.event = 17;
    state.domain = "127.0.0.1:5060";
    state.ready = true;
    state.service = "in service";
    LineStatus line;
    line.id = "4711";
    line.number = 1;
    line.state = "idle";
    line.forwarding = {{1, "busy", true, "103"}};
    LineStatus appearance;
    appearance.id = "4711#2";
    appearance.number = 1002;
    appearance.state = "idle";
    line.appearances = {appearance};
    state.lines = {line};
    CallStatus call;
    call.id = 1001;
    call.line = "4711";
    call.place = "4711";
    call.state = "ringing";
    state.calls = {call};
    state.keys = {{3, "line", "4711", "4711", false, {"flashing", "green"}}, {0, "mwi", "", "", true, {}}};
    return state;
}

TableRows differences(TelephoneState const& first, TelephoneState const& second)
{
    return stateDifferences(stateJson(first), stateJson(second)).value();
}

}  // namespace

TEST(StateDifference, OfTheSameState_IsNone)
{
    EXPECT_EQ(differences(ringingTelephone(), ringingTelephone()), TableRows{});
}

TEST(StateDifference, OfTimesNumbersAndStarts_IsNone)
{
    TelephoneState later = ringingTelephone();
    later.start = "zzzzzzzz";
    later.event = 40;
    later.time += std::chrono::hours(1);
    later.calls[0].since += std::chrono::hours(1);
    later.calls[0].began += std::chrono::minutes(1);

    EXPECT_EQ(differences(ringingTelephone(), later), TableRows{});
}

TEST(StateDifference, NamesThePlaceAndBothValues)
{
    TelephoneState changed = ringingTelephone();
    changed.hookUp = true;
    changed.locked = true;
    changed.store = "/tmp/store";
    changed.plugged = {"headset", "line"};
    changed.lines[0].doNotDisturb = true;
    changed.lines[0].forwarding[0].destination = "104";
    changed.lines[0].appearances[0].state = "active";
    changed.calls[0].state = "connected";
    changed.calls[0].party.name = "A\x1b";
    changed.calls[0].conference = {{"sip:100@a", "Ann"}, {"sip:103@a", ""}};
    changed.keys[0].lamp.mode = "steady";
    changed.keys[1].lamp.mode = "steady";

    EXPECT_EQ(differences(ringingTelephone(), changed), (TableRows{
                                                            "call 1001: conference: none → sip:100@a Ann, sip:103@a",
                                                            "call 1001, party: name: none → A\\x1b",
                                                            "call 1001: state: ringing → connected",
                                                            "hook up: no → yes",
                                                            "key 3, lamp: mode: flashing → steady",
                                                            "key mwi, lamp: mode: off → steady",
                                                            "line 4711, appearance 4711#2: state: idle → active",
                                                            "line 4711: do not disturb: no → yes",
                                                            "line 4711, forwarding busy: destination: 103 → 104",
                                                            "locked: no → yes",
                                                            "plugged: none → headset, line",
                                                            "store: path: none → /tmp/store",
                                                        }));
}

TEST(StateDifference, CallsAreComparedByTheirIds)
{
    TelephoneState changed = ringingTelephone();
    CallStatus call;
    call.id = 1;
    call.state = "dialling";
    changed.calls.insert(changed.calls.begin(), call);

    EXPECT_EQ(differences(ringingTelephone(), changed), TableRows{"call 1: only in the second (dialling)"});
    EXPECT_EQ(differences(changed, ringingTelephone()), TableRows{"call 1: only in the first (dialling)"});
}

TEST(StateDifference, CallThatIsOver_IsNotTheCallThatHasItsId)
{
    TelephoneState changed = ringingTelephone();
    CallStatus over = changed.calls[0];
    over.over = true;
    over.state = "busy";
    changed.calls.insert(changed.calls.begin(), over);

    EXPECT_EQ(differences(ringingTelephone(), changed), TableRows{"call 1001 that is over: only in the second (busy)"});
}

TEST(StateDifference, OtherText_IsRefused)
{
    std::string const state = stateJson(ringingTelephone());

    EXPECT_EQ(stateDifferences("", state).error().reason,
              "the first is not a state of a telephone, as the command state returns it");
    EXPECT_EQ(stateDifferences(state, "{}").error().reason,
              "the second is not a state of a telephone, as the command state returns it");
    EXPECT_FALSE(stateDifferences(state, "[1]"));
}
