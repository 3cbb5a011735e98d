#include "telephone/access/Invariants.h"

#include <gtest/gtest.h>

#include "TelephoneDouble.h"
#include "platform/framework/Semaphore.h"

namespace telephone {
namespace {

using Sentences = std::vector<std::string>;

EventHistory::Events toldStates(std::vector<std::pair<int, int>> const& states)
{
    EventHistory::Events events;
    for (auto const& [call, state] : states) {
        auto const text = "<Method>CallStateChangeEvent</Method><LineID>4711</LineID><CallID>" + std::to_string(call) +
                          "</CallID><CallState>" + std::to_string(state) +
                          "</CallState><Reason>1</Reason><SendOptions>0</SendOptions><URI></URI><Name></Name>"
                          "<GPUCLG></GPUCLG><GPUCLGName></GPUCLGName><GPUCLD></GPUCLD><GPUCLDName></GPUCLDName>"
                          "<ResourcePriority>0</ResourcePriority><PreemptionCause>0</PreemptionCause>"
                          "<PreemptionText></PreemptionText><CallBackFearureAvailable>0</CallBackFearureAvailable>"
                          "<ILCallLevel>0</ILCallLevel><ILLocalLevel>0</ILLocalLevel>";
        events.push_back(std::make_shared<PastEvent const>(PastEvent{events.size() + 1, {}, text}));
    }
    return events;
}

TelephoneState stateWithCall(int id, char const* state)
{
    TelephoneState telephone;
    CallStatus& call = telephone.calls.emplace_back();
    call.id = id;
    call.state = state;
    return telephone;
}

TelephoneState stateWithLamp(char const* function, char const* target)
{
    TelephoneState telephone;
    LineStatus& line = telephone.lines.emplace_back();
    line.id = "4711";
    line.state = "idle";
    KeyState& key = telephone.keys.emplace_back();
    key.number = 1;
    key.function = function;
    key.target = target;
    key.lamp.mode = "steady";
    return telephone;
}

TEST(InvariantsTest, CallThatIsToldAndThere_IsRight)
{
    EXPECT_EQ(wronglyToldCalls(toldStates({{1, 1}, {1, 6}}), stateWithCall(1, "connected")), Sentences());
}

TEST(InvariantsTest, CallWhoseEndWasTold_IsRight)
{
    EXPECT_EQ(wronglyToldCalls(toldStates({{1, 6}, {1, 0}, {2, 13}, {3, 14}}), TelephoneState()), Sentences());
}

TEST(InvariantsTest, CallThatEndsWithoutEvent_IsFound)
{
    EXPECT_EQ(wronglyToldCalls(toldStates({{7, 6}}), TelephoneState()),
              (Sentences{"call 7 is over without an event; the last one said connected"}));
}

TEST(InvariantsTest, CallThatWasToldToBeOver_IsFound)
{
    EXPECT_EQ(wronglyToldCalls(toldStates({{7, 6}, {7, 0}}), stateWithCall(7, "held")),
              (Sentences{"call 7 is held, and its events say that it is over"}));
}

TEST(InvariantsTest, LampOfAnIdleLine_HasNoCause)
{
    EXPECT_EQ(lampsWithoutCause(stateWithLamp("line", "4711")),
              (Sentences{"the lamp 1 is steady, and the line is idle"}));
}

TEST(InvariantsTest, LampOfAnotherTelephonesLine_IsNotJudged)
{
    EXPECT_EQ(lampsWithoutCause(stateWithLamp("dss", "4799")), Sentences());
}

TEST(InvariantsTest, LampOfABusyLine_HasACause)
{
    TelephoneState telephone = stateWithLamp("line", "4711");
    telephone.lines[0].state = "held";

    EXPECT_EQ(lampsWithoutCause(telephone), Sentences());
}

TEST(InvariantsTest, LampsOfSettings_FollowThem)
{
    TelephoneState telephone = stateWithLamp("dnd", "");
    EXPECT_EQ(lampsWithoutCause(telephone), (Sentences{"the lamp 1 is steady, and do-not-disturb is off"}));
    telephone.lines[0].doNotDisturb = true;
    EXPECT_EQ(lampsWithoutCause(telephone), Sentences());

    telephone = stateWithLamp("forwarding", "103");
    EXPECT_EQ(lampsWithoutCause(telephone), (Sentences{"the lamp 1 is steady, and no line is forwarded"}));
    telephone.lines[0].forwarding.push_back({6, "no reply", true, "103"});
    EXPECT_EQ(lampsWithoutCause(telephone), Sentences());
}

TEST(InvariantsTest, LampThatIsOff_NeedsNoCause)
{
    TelephoneState telephone = stateWithLamp("messages", "");
    telephone.keys[0].lamp.mode = "off";

    EXPECT_EQ(lampsWithoutCause(telephone), Sentences());
}

TEST(InvariantsTest, AcceptedSettingThatTheStoreLacks_IsFound)
{
    EXPECT_EQ(settingsNotStored({"cfu-activated = true"}),
              (Sentences{"the setting cfu-activated = true was accepted, and the store does not have it"}));
}

TEST(InvariantsTest, LampOfABusyAppearanceOrASelectedLine_HasACause)
{
    TelephoneState telephone = stateWithLamp("line", "4711");
    telephone.lines[0].selected = true;
    EXPECT_EQ(lampsWithoutCause(telephone), Sentences());

    telephone = stateWithLamp("dss", "4711");
    EXPECT_EQ(lampsWithoutCause(telephone), (Sentences{"the lamp 1 is steady, and the line is idle"}));
    LineStatus& appearance = telephone.lines[0].appearances.emplace_back();
    appearance.state = "idle";
    EXPECT_EQ(lampsWithoutCause(telephone), (Sentences{"the lamp 1 is steady, and the line is idle"}));
    appearance.state = "active";
    EXPECT_EQ(lampsWithoutCause(telephone), Sentences());
}

TEST(InvariantsTest, LampsOutsideTheKeys_FollowTheTelephone)
{
    TelephoneState telephone = stateWithLamp("hold", "");
    telephone.keys[0].number = 0;
    Sentences const noCall{"the lamp hold is steady, and no call is held"};
    EXPECT_EQ(lampsWithoutCause(telephone), noCall);
    CallStatus& call = telephone.calls.emplace_back();
    EXPECT_EQ(lampsWithoutCause(telephone), noCall);
    call.heldHere = true;
    EXPECT_EQ(lampsWithoutCause(telephone), Sentences());
    call.over = true;
    EXPECT_EQ(lampsWithoutCause(telephone), noCall);

    telephone = stateWithLamp("mute", "");
    EXPECT_EQ(lampsWithoutCause(telephone), (Sentences{"the lamp 1 is steady, and the microphone is on"}));
    telephone.muted = true;
    EXPECT_EQ(lampsWithoutCause(telephone), Sentences());

    telephone = stateWithLamp("headset", "");
    telephone.plugged = {"handset"};
    EXPECT_EQ(lampsWithoutCause(telephone), (Sentences{"the lamp 1 is steady, and no headset is plugged in"}));
    telephone.plugged = {"handset", "headset"};
    EXPECT_EQ(lampsWithoutCause(telephone), Sentences());

    telephone = stateWithLamp("messages", "");
    Sentences const noMessage{"the lamp 1 is steady, and no message waits"};
    EXPECT_EQ(lampsWithoutCause(telephone), noMessage);
    telephone.lines[0].messages.emplace();
    EXPECT_EQ(lampsWithoutCause(telephone), noMessage);
    telephone.lines[0].messages->waiting = true;
    EXPECT_EQ(lampsWithoutCause(telephone), Sentences());

    EXPECT_EQ(lampsWithoutCause(stateWithLamp("toggle", "")), Sentences());
}

TEST(InvariantsTest, CallThatIsOver_NeedsNoEvent)
{
    TelephoneState telephone = stateWithCall(7, "held");
    telephone.calls[0].over = true;
    EXPECT_EQ(wronglyToldCalls({}, telephone), Sentences());
    EXPECT_EQ(wronglyToldCalls({}, stateWithCall(7, "busy")), Sentences());
    EXPECT_EQ(wronglyToldCalls({}, stateWithCall(7, "failed")), Sentences());
}

TEST(InvariantsTest, AllTogether_AreInOneList)
{
    TelephoneDouble telephone;
    EventHistory const& history = telephone.services().history;
    TelephoneState state = stateWithCall(7, "held");
    state.keys = stateWithLamp("mute", "").keys;
    Semaphore taken(1, 1, false);
    Invariants invariants;
    ASSERT_TRUE(taken.take(0));

    EXPECT_EQ(invariants.broken(history, state, {"cfu-activated = true"}),
              (Sentences{"call 7 is held, and its events say that it is over",
                         "the lamp 1 is steady, and the microphone is on",
                         "the setting cfu-activated = true was accepted, and the store does not have it",
                         "1 locks of the service are taken"}));

    taken.give();
    EXPECT_EQ(invariants.broken(history, TelephoneState(), {}), Sentences());
    EXPECT_EQ(invariants.broken(history, TelephoneState(), {}), Sentences());
}

}  // namespace
}  // namespace telephone
