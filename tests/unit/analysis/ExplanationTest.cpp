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
