// The state's JSON.
#include <gtest/gtest.h>

#include "TelephoneClient.h"

using namespace telephone_client;

namespace {

constexpr char const* kState =
    R"({"start":"a\u00e9\ud83d\ude00\"\\\n","event":12,"time":"2026-11-22T21:09:57.500Z","domain":"telephone.example",
"ready":true,"service":"out of service","lines":[{"id":"4711","number":1,"registration":"registered","state":"ringing",
"primary":true,"selected":false,"do_not_disturb":false,"forwarding":[{"type":6,"name":"no reply","active":true,
"destination":"4716"}],"agent":"logged on","rings":true,"ring_delay":0,"messages":null,"appearances":[]}],
"calls":[{"id":7,"line":"4711","place":"4711","appearance":null,"state":"whistling","state_number":99,"over":false,
"reason":"normal","incoming":true,"party":{"address":"100","name":null},"since":"2026-11-22T21:09:57.500Z",
"began":"2026-11-22T21:09:57.500Z","held_here":false,"held_by_far_end":false,"held_for_consultation":false,
"in_conference":false,"conference":[],"secure":false,"audio":{"sent":1,"received":2,"lost":0,"jitter":1.5,
"far_lost":null,"far_jitter":null,"round_trip":0.25,"foreign":0,"forged":0,"replayed":0},"recording":false,
"call_back_possible":false}],"keys":[{"number":3,"function":"dss","target":"4712","label":null,"shows_only":false,
"lamp":{"mode":"fluttering","colour":"green"}}],"hook_up":false,"plugged":["headset"],"muted":false,"locked":false,
"store":{"path":null,"writable":true},"of a later version":[1,-2.5e3,{"a":[]}]})";

TEST(State, AllKindsOfMembers_AreRead)
{
    auto const state = readState(kState).value();

    EXPECT_EQ(state.start, "a\u00e9\U0001f600\"\\\n");
    EXPECT_EQ(state.event, 12);
    EXPECT_EQ(state.domain, "telephone.example");
    EXPECT_EQ(state.service, ServiceState::kOutOfService);
    EXPECT_EQ(state.lines.at(0).forwarding.at(0).type, ForwardingType::kNoReply);
    EXPECT_EQ(state.lines.at(0).forwarding.at(0).name, ForwardingType::kNoReply);
    EXPECT_EQ(state.lines.at(0).agent, AgentState::kLoggedOn);
    EXPECT_FALSE(state.lines.at(0).messages);
    EXPECT_EQ(state.calls.at(0).party.address, "100");
    EXPECT_FALSE(state.calls.at(0).party.name);
    EXPECT_EQ(state.calls.at(0).audio->jitter, 1.5);
    EXPECT_EQ(state.calls.at(0).audio->roundTrip, 0.25);
    EXPECT_EQ(state.keys.at(0).lamp.mode, LampMode::kFluttering);
    EXPECT_EQ(state.plugged, std::vector<std::string>{"headset"});
    EXPECT_TRUE(state.store.writable);
}

TEST(State, NameThatIsNotListed_IsUnlisted)
{
    auto const state = readState(kState).value();

    EXPECT_EQ(state.calls.at(0).state, kUnlisted<CallState>);
    EXPECT_EQ(state.calls.at(0).stateNumber, static_cast<CallState>(99));
}

TEST(State, WrongForm_IsRefused)
{
    EXPECT_EQ(readState("{").error().reason, "the telephone's state is not JSON");
    EXPECT_EQ(readState(std::string(100, '[')).error().reason, "the telephone's state is not JSON");
    EXPECT_EQ(readState(R"({"start":"\ud83d"})").error().reason, "the telephone's state is not JSON");
    EXPECT_EQ(readState(R"({"start":"a"})").error().reason,
              "the telephone's state has another form than this client knows");
}

}  // namespace
