#include "telephone/analysis/Explanation.h"

#include "TraceTexts.h"

namespace telephone {
namespace {

using test::held;
using test::options;
using test::TraceText;

std::string joined(Outcome<Sentences> const& sentences)
{
    std::string text = "\n";
    if (!sentences) {
        return "refused: " + sentences.error().reason;
    }
    for (std::string const& each : *sentences) {
        text += each + "\n";
    }
    return text;
}

std::string why(TraceText const& trace, std::uint64_t event)
{
    return joined(explainEvent(trace.contents(), event, options()));
}

std::string whyLamp(TraceText const& trace, std::string_view lamp)
{
    return joined(explainLamp(trace.contents(), lamp, options()));
}

constexpr std::string_view kHeldEvent = "<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>3</CallID>";

TEST(Explanation, EventOfAHold_LeadsBackToItsRequest)
{
    EXPECT_EQ(why(held(), 9), R"(
Event 9 says that call 3 with 100 is held.
The call engine had put call 3 with 100 on hold, because 100 answered the INVITE with 200 OK recvonly.
The telephone had sent this INVITE to 100, because the service called CSfi::CallFeature with feature hold.
It did so for the request HoldCall 4711 call 3 of console at 12:00:01.201.
)");
}

TEST(Explanation, Lamp_IsExplainedByItsLatestChange)
{
    TraceText trace = held();
    EXPECT_EQ(whyLamp(trace, "3"), R"(
Lamp 3 "Hold" has been flashing green since 12:00:01.201.
The call engine had put call 3 with 100 on hold, because 100 answered the INVITE with 200 OK recvonly.
The telephone had sent this INVITE to 100, because the service called CSfi::CallFeature with feature hold.
It did so for the request HoldCall 4711 call 3 of console at 12:00:01.201.
)");
    trace.lamp(19, 3, "Hold", "off", "none");
    EXPECT_EQ(whyLamp(trace, "Hold"), R"(
Lamp 3 "Hold" has been off since 12:00:02.500.
Call 3 with 100 had ended, because 100 sent a BYE at 12:00:02.500.
)");
    EXPECT_EQ(whyLamp(trace, "4"), "refused: hold.trace has no change of a lamp 4");
}

TEST(Explanation, Timer_TellsWhenItWasStarted)
{
    TraceText trace;
    trace.step(0, R"("step":"command","application":"console","text":"call 4711 from 100")");
    trace.sip(1, "received", "INVITE").engine(2, 1001, "", "ringing");
    trace.at("15.000").step(2, R"("step":"timer","name":"nobody answers a forwarded line")");
    trace.engine(4, 1001, "ringing", "idle");
    trace.event(4, 7,
                "<Method>CallForwardedEvent</Method><LineID>4711</LineID><CallID>1001</CallID><CallingParty>"
                "sip:100@127.0.0.1:5060</CallingParty><CallingPartyName></CallingPartyName><NewDestination>103"
                "</NewDestination><Reason>3</Reason>");
    EXPECT_EQ(why(trace, 7), R"(
Event 7 says about call 1001 from 100: forwarded, to 103, no reply.
Call 1001 from 100 had ended, because the timer "nobody answers a forwarded line" ran out.
It had been started 15.0 s earlier, when 100 sent an INVITE, as console asked with the command "call 4711 from 100" at 12:00:00.000.
)");
}

TEST(Explanation, Key_LeadsToItsCommand)
{
    TraceText trace;
    trace.sip(0, "received", "INVITE").engine(1, 1001, "", "ringing");
    trace.step(0, R"("step":"command","application":"panel","text":"press 1")");
    trace.step(3, R"("step":"key","key":1,"label":"4711","function":"line","action":"pressed")");
    trace.sip(4, "sent", "INVITE", "200 OK").sip(5, "received", "ACK").engine(6, 1001, "ringing", "connected");
    trace.event(6, 3, test::eventText("CallRetrievedEvent", {{"LineID", "4711"}, {"CallID", "1001"}}));
    EXPECT_EQ(why(trace, 3), R"(
Event 3 says that call 1001 from 100 is retrieved.
Call 1001 from 100 had been connected, because 100 sent an ACK.
The telephone had answered the INVITE of 100 with 200 OK, because key 1 "4711" was pressed, as panel asked with the command "press 1" at 12:00:00.000.
)");
}

TEST(Explanation, KeyOfAPerson_IsABeginning)
{
    TraceText trace;
    trace.step(0, R"("step":"key","key":7,"label":"Hold","function":"hold","action":"pressed")")
        .lamp(1, 7, "Hold", "steady", "red");
    trace.step(0, R"("step":"key","hook":"up")").lamp(3, 1, "", "steady", "green");
    trace.step(0, R"("step":"key","plug":"headset","action":"out")").lamp(5, 2, "", "off", "none");
    EXPECT_EQ(whyLamp(trace, "7"), R"(
Lamp 7 "Hold" has been steady red since 12:00:00.000.
This happened because key 7 "Hold" was pressed at 12:00:00.000.
)");
    EXPECT_EQ(whyLamp(trace, "1"), R"(
Lamp 1 has been steady green since 12:00:00.000.
This happened because the handset was lifted at 12:00:00.000.
)");
    EXPECT_EQ(whyLamp(trace, "2"), R"(
Lamp 2 has been off since 12:00:00.000.
This happened because the headset was unplugged at 12:00:00.000.
)");
}

TEST(Explanation, FarEndsRequests_FollowOurs)
{
    TraceText trace;
    trace.request(test::requestText("BlindTransfer", "3", "103")).sip(1, "sent", "REFER").sip(2, "received", "NOTIFY");
    trace.event(3, 4,
                "<Method>FeatureSuccessEvent</Method><LineID>4711</LineID><CallID>3</CallID><Feature>2</Feature>");
    EXPECT_EQ(why(trace, 4), R"(
Event 4 says about call 3: feature done, blind transfer.
This happened because 127.0.0.1:5060 sent a NOTIFY.
It followed a REFER that the telephone had sent to 127.0.0.1:5060, because console sent the request BlindTransfer 4711 call 3 Destination=103 at 12:00:00.000.
)");
}

TEST(Explanation, FaultAndStore_AreCauses)
{
    TraceText trace;
    trace.step(0, R"("step":"fault","fault":"registrar away","state":"begins")");
    trace.step(1, R"("step":"store","settings":"dnd, agent-state","reason":"the disk is full")");
    trace.event(2, 1,
                test::eventText("RegistrationStateChangeEvent", {{"LineID", "4711"}, {"RegistrationResult", "3"}}));
    EXPECT_EQ(why(trace, 1), R"(
Event 1 says about line 4711: not registered, no answer.
This happened because the settings dnd, agent-state could not be stored (the disk is full).
This happened because the fault registrar away began at 12:00:00.000.
)");
}

TEST(Explanation, ChainWithoutABeginning_SaysSo)
{
    TraceText trace;
    trace.step(0, R"("step":"timer","name":"call is refreshed")").event(1, 1, kHeldEvent).event(0, 2, kHeldEvent);
    trace.event(99, 3, "nonsense");
    EXPECT_EQ(why(trace, 1), R"(
Event 1 says that call 3 is held.
This happened because the timer "call is refreshed" ran out.
The trace does not say what led to this.
)");
    EXPECT_EQ(why(trace, 2), R"(
Event 2 says that call 3 is held.
The trace does not say what led to this.
)");
    EXPECT_EQ(why(trace, 3), R"(
Event 3 says "nonsense".
What led to this happened before the trace began.
)");
}

TEST(Explanation, LongChain_IsToldWithoutItsMiddle)
{
    TraceText trace;
    trace.request("GetDevices");
    for (int number = 1; number <= 1000; ++number) {
        trace.step(number, R"("step":"timer","name":"call is refreshed")");
    }
    trace.event(1001, 1, kHeldEvent);
    auto const sentences = explainEvent(trace.contents(), 1, options());
    ASSERT_TRUE(sentences);
    EXPECT_EQ(sentences->size(), 22U);
    EXPECT_EQ(sentences->at(16), "980 steps before, the timer \"call is refreshed\" ran out.");
    EXPECT_EQ(sentences->back(),
              "It had been started <1 ms earlier, when console sent the request GetDevices at 12:00:00.000.");
}

// The sentence on what led to an event.
std::string because(TraceText trace, std::string_view members, int cause = 0)
{
    trace.step(cause, members);
    trace.event(trace.number(), 77, test::eventText("DoNotDisturbEvent", {}));
    auto const sentences = explainEvent(trace.contents(), 77, options());
    return sentences ? sentences->at(1) : sentences.error().reason;
}

struct ChangeRow
{
    std::string_view before;  // "": a new call
    std::string_view state;
    std::string_view told;
    std::string_view recalled;
};

// clang-format off
constexpr ChangeRow kChanges[] = {
    {"", "dialling", "call 3 to 100 began", "Call 3 to 100 had begun"},
    {"dialling", "proceeding", "call 3 with 100 made progress", "Call 3 with 100 had made progress"},
    {"dialling", "remote ringing", "call 3 with 100 began to ring at the far end", "Call 3 with 100 had begun to ring at the far end"},
    {"", "incoming", "call 3 from 100 arrived", "Call 3 from 100 had arrived"},
    {"", "ringing", "call 3 from 100 began to ring", "Call 3 from 100 had begun to ring"},
    {"held", "connected", "the call engine took call 3 with 100 back from hold", "The call engine had taken call 3 with 100 back from hold"},
    {"remotely held", "connected", "the far end took call 3 with 100 back from hold", "The far end had taken call 3 with 100 back from hold"},
    {"ringing", "connected", "call 3 with 100 was connected", "Call 3 with 100 had been connected"},
    {"connected", "held", "the call engine put call 3 with 100 on hold", "The call engine had put call 3 with 100 on hold"},
    {"connected", "remotely held", "the far end put call 3 with 100 on hold", "The far end had put call 3 with 100 on hold"},
    {"held", "held by both", "call 3 with 100 was put on hold at both ends", "Call 3 with 100 had been put on hold at both ends"},
    {"connected", "conference", "call 3 with 100 joined a conference", "Call 3 with 100 had joined a conference"},
    {"held", "transferring", "the transfer of call 3 with 100 began", "The transfer of call 3 with 100 had begun"},
    {"dialling", "busy", "call 3 with 100 found the far end busy", "Call 3 with 100 had found the far end busy"},
    {"dialling", "failed", "call 3 with 100 failed", "Call 3 with 100 had failed"},
    {"connected", "idle", "call 3 with 100 ended", "Call 3 with 100 had ended"},
    {"connected", "parked", "call 3 with 100 became parked", "Call 3 with 100 had become parked"},
};
// clang-format on

TEST(Explanation, EveryChangeOfACall_HasItsWords)
{
    for (auto const& [before, state, told, recalled] : kChanges) {
        TraceText trace;
        trace.step(0, R"("step":"timer","name":"a timer")").engine(1, 3, before, state);
        trace.lamp(1, 4, "", "steady", "red")
            .step(2, R"("step":"timer","name":"another")")
            .lamp(4, 5, "", "off", "none");
        EXPECT_EQ(whyLamp(trace, "4"), "\nLamp 4 has been steady red since 12:00:00.000.\n" + std::string(recalled) +
                                           ", because the timer \"a timer\" ran out.\n"
                                           "The trace does not say what led to this.\n");
        std::string const text = whyLamp(trace, "5");
        EXPECT_NE(text.find("It had been started <1 ms earlier, when " + std::string(told) + ".\n"), std::string::npos)
            << text;
    }
}

TEST(Explanation, EventOfACallState_SaysItAsASentence)
{
    struct Row
    {
        std::string_view method;
        std::string_view state;  // of the event
        std::string_view predicate;
    };
    // clang-format off
    for (auto const& [method, state, predicate] : {
             Row{"CallStateChangeEvent", "0", "is over"},
             Row{"CallStateChangeEvent", "1", "is being dialled"},
             Row{"CallStateChangeEvent", "2", "is on its way"},
             Row{"CallStateChangeEvent", "3", "is ringing at the far end"},
             Row{"CallStateChangeEvent", "4", "has arrived"},
             Row{"CallStateChangeEvent", "5", "is ringing"},
             Row{"CallStateChangeEvent", "6", "is connected"},
             Row{"IncomingCallEvent", "0", "has arrived"},
             Row{"IncomingCallMissedEvent", "0", "was missed"},
             Row{"CallHeldEvent", "0", "is held"},
             Row{"CallRetrievedEvent", "0", "is retrieved"},
             Row{"conferenceStatusEvent", "0", "is in a conference"},
         }) {
        // clang-format on
        TraceText trace;
        trace.event(0, 5, test::eventText(method, {{"LineID", "4711"}, {"CallID", "3"}, {"CallState", state}}));
        std::string const text = why(trace, 5);
        EXPECT_EQ(text.substr(1, text.find('\n', 1) - 1), "Event 5 says that call 3 " + std::string(predicate) + ".");
    }
}

TEST(Explanation, EveryCause_HasItsWords)
{
    std::string const failed = R"("step":"store","settings":"dnd","reason":"full")";
    // clang-format off
    for (auto const& [members, sentence] : {
             std::pair(R"("step":"command","application":"panel","text":"lock")", R"(panel gave the command "lock" at 12:00:00.000)"),
             std::pair(R"("step":"answer","text":"sfiSuccess")", "the request was answered with sfiSuccess"),
             std::pair(R"("step":"reason","text":"no line")", "the request was refused: no line"),
             std::pair(R"("step":"event","number":5,"text":"")", "event 5 was sent"),
             std::pair(R"("step":"platform","name":"CSfi::CallMake","arguments":{"destination":"100","mode":2,"uri":"sip:103@127.0.0.1:5060"})", "the service called CSfi::CallMake with destination 100, uri 103"),
             std::pair(R"("step":"platform","name":"CSfi::Lock")", "the service called CSfi::Lock"),
             std::pair(R"("step":"key","hook":"up")", "the handset was lifted at 12:00:00.000"),
             std::pair(R"("step":"key","hook":"down")", "the handset was replaced at 12:00:00.000"),
             std::pair(R"("step":"key","plug":"headset","action":"in")", "the headset was plugged in at 12:00:00.000"),
             std::pair(R"("step":"key","plug":"headset","action":"out")", "the headset was unplugged at 12:00:00.000"),
             std::pair(R"("step":"key","key":3,"action":"pressed")", "key 3 was pressed at 12:00:00.000"),
             std::pair(R"("step":"lamp","lamp":3,"mode":"steady","colour":"red")", "lamp 3 became steady red"),
             std::pair(R"("step":"timer","name":"ring")", R"(the timer "ring" ran out)"),
             std::pair(R"("step":"store","settings":["dnd","agent-state"])", "the settings dnd, agent-state were stored"),
             std::pair(R"("step":"store","settings":"dnd","reason":"full")", "the settings dnd could not be stored (full)"),
             std::pair(R"("step":"fault","fault":"lamps stuck","state":"begins")", "the fault lamps stuck began at 12:00:00.000"),
             std::pair(R"("step":"fault","fault":"lamps stuck","state":"ends")", "the fault lamps stuck ended at 12:00:00.000"),
             std::pair(R"("step":"sip","direction":"sent","method":"INVITE","peer":"a:5060")", "the telephone sent an INVITE to a:5060"),
             std::pair(R"("step":"sip","direction":"sent","method":"BYE")", "the telephone sent a BYE to the far end"),
             std::pair(R"("step":"sip","direction":"received","method":"OPTIONS","peer":"a:5060")", "a:5060 sent an OPTIONS at 12:00:00.000"),
             std::pair(R"("step":"sip","direction":"sent","method":"BYE","status":200,"phrase":"OK","peer":"a:5060")", "the telephone answered the BYE of a:5060 with 200 OK"),
             std::pair(R"("step":"sip","direction":"received","method":"BYE","status":200,"phrase":"OK","peer":"a:5060")", "a:5060 answered the BYE with 200 OK"),
         }) {
        // clang-format on
        EXPECT_EQ(because({}, members), "This happened because " + std::string(sentence) + ".") << members;
    }
}

TEST(Explanation, CommandBehindAnyInput_IsWhatAskedForIt)
{
    // clang-format off
    for (auto const& [members, sentence] : {
             std::pair(R"("step":"key","key":3,"action":"pressed")", "key 3 was pressed"),
             std::pair(R"("step":"key","hook":"up")", "the handset was lifted"),
             std::pair(R"("step":"key","plug":"headset","action":"in")", "the headset was plugged in"),
             std::pair(R"("step":"fault","fault":"lamps stuck","state":"begins")", "the fault lamps stuck began"),
             std::pair(R"("step":"sip","direction":"received","method":"INVITE","peer":"a:5060")", "a:5060 sent an INVITE"),
         }) {
        // clang-format on
        TraceText trace;
        trace.step(0, R"("step":"command","application":"panel","text":"a command")");
        EXPECT_EQ(because(trace, members, 1), "This happened because " + std::string(sentence) +
                                                  ", as panel asked with the command \"a command\" at 12:00:00.000.");
    }
}

TEST(Explanation, PlatformCallOfACommand_WasMadeForIt)
{
    TraceText trace;
    trace.step(0, R"("step":"command","application":"panel","text":"lock")").platform(1, "CSfi::Lock", "");
    trace.lamp(2, 3, "", "off", "none");
    EXPECT_EQ(whyLamp(trace, "3"), R"(
Lamp 3 has been off since 12:00:00.000.
This happened because the service called CSfi::Lock.
It did so for the command "lock" of panel at 12:00:00.000.
)");
}

TEST(Explanation, RequestThatFollowsOurAnswer_LeadsBackToTheRequestThatWasAnswered)
{
    TraceText trace;
    trace.sip(0, "received", "INVITE").sip(1, "sent", "INVITE", "200 OK").sip(2, "received", "ACK");
    trace.lamp(3, 3, "", "off", "none");
    EXPECT_EQ(whyLamp(trace, "3"), R"(
Lamp 3 has been off since 12:00:00.000.
This happened because 127.0.0.1:5060 sent an ACK.
The telephone had answered the INVITE of 127.0.0.1:5060 with 200 OK.
127.0.0.1:5060 had sent this INVITE.
)");
}

TEST(Explanation, EventOfTheWholeTelephone_NamesNoLine)
{
    TraceText trace;
    trace.event(0, 5, test::eventText("DoNotDisturbEvent", {{"doNotDisturbOn", "1"}}));
    EXPECT_EQ(why(trace, 5), R"(
Event 5 says: do-not-disturb, on.
The trace does not say what led to this.
)");
}

TEST(Explanation, EventOfACall_TellsOfTheChangeWithItsState)
{
    // One message changes two calls, and one of them twice.
    TraceText trace;
    trace.sip(0, "received", "INVITE", "200 OK").engine(1, 3, "dialling", "remote ringing", "sip:103@127.0.0.1:5060");
    trace.engine(1, 3, "remote ringing", "connected", "sip:103@127.0.0.1:5060").engine(1, 4, "", "dialling");
    trace.engine(1, 4, "dialling", "dialling");
    auto const change = [](std::string_view call, std::string_view state) {
        return test::eventText("CallStateChangeEvent", {{"LineID", "4711"}, {"CallID", call}, {"CallState", state}});
    };
    trace.event(1, 5, change("3", "3")).event(1, 6, change("3", "6")).event(1, 7, change("3", "0"));
    trace.event(1, 8, change("9", "0")).event(1, 9, change("4", "6"));
    auto const second = [&trace](std::uint64_t event) {
        return explainEvent(trace.contents(), event, options())->at(1);
    };
    EXPECT_EQ(second(5),
              "Call 3 with 103 had begun to ring at the far end, because 100 answered the INVITE with 200 OK.");
    EXPECT_EQ(second(6), "Call 3 with 103 had been connected, because 100 answered the INVITE with 200 OK.");
    EXPECT_EQ(second(7), "Call 3 with 103 had been connected, because 100 answered the INVITE with 200 OK.");
    EXPECT_EQ(second(8), "This happened because 100 answered the INVITE with 200 OK.");
    EXPECT_EQ(second(9), "Call 4 to 100 had begun, because 100 answered the INVITE with 200 OK.");
}

TEST(Explanation, LampAndEvent_TellOfNoChangeWithAnotherCause)
{
    TraceText trace;
    trace.step(0, R"("step":"timer","name":"first")").step(0, R"("step":"timer","name":"second")");
    trace.engine(1, 3, "connected", "held").engine(2, 3, "held", "held").lamp(2, 3, "", "off", "none");
    trace.lamp(2, 4, "", "off", "none").event(2, 5, kHeldEvent);
    constexpr std::string_view kRest = "This happened because the timer \"second\" ran out.\n"
                                       "The trace does not say what led to this.\n";
    EXPECT_EQ(whyLamp(trace, "3"), "\nLamp 3 has been off since 12:00:00.000.\n" + std::string(kRest));
    EXPECT_EQ(whyLamp(trace, "4"), "\nLamp 4 has been off since 12:00:00.000.\n" + std::string(kRest));
    EXPECT_EQ(why(trace, 5), "\nEvent 5 says that call 3 with 100 is held.\n" + std::string(kRest));
}

TEST(Explanation, ChainOf24Steps_IsToldWhole)
{
    for (auto const& [timers, sentences] : {std::pair(22, 24U), std::pair(23, 22U)}) {
        TraceText trace;
        trace.request("GetDevices");
        for (int number = 1; number <= timers; ++number) {
            trace.step(number, R"("step":"timer","name":"call is refreshed")");
        }
        trace.event(trace.number(), 1, "nonsense");
        auto const told = explainEvent(trace.contents(), 1, options());
        ASSERT_TRUE(told);
        EXPECT_EQ(told->size(), sentences) << timers;
    }
}

TEST(Explanation, UnknownEvent_IsRefused)
{
    EXPECT_EQ(why(held(), 10), "refused: hold.trace has no event 10; it has the events 8 to 9");
    EXPECT_EQ(why(TraceText(), 10), "refused: hold.trace has no event 10; it has no events");
}

TEST(Explanation, TextsFromTheWire_CannotControlTheTerminal)
{
    std::string const evil = R"(\u001b[2J\u202e)";
    TraceText trace;
    trace.step(0, R"("step":"command","application":")" + evil + R"(","text":")" + evil + "\"");
    trace.step(1, R"("step":"key","key":1,"label":")" + evil + R"(","action":")" + evil + "\"");
    trace.platform(2, evil, "\"" + evil + "\":\"" + evil + "\"").engine(3, 3, evil, evil, evil, evil);
    trace.sip(4, evil, evil, "200 " + evil, evil, evil).lamp(5, 1, evil, evil, evil).event(6, 9, evil);
    std::string const text = why(trace, 9) + whyLamp(trace, "1");
    EXPECT_EQ(text.find('\x1b'), std::string::npos);
    EXPECT_EQ(text.find("\u202e"), std::string::npos);
}

}  // namespace
}  // namespace telephone
