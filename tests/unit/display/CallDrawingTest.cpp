#include "telephone/display/CallDrawing.h"

#include <gtest/gtest.h>

#include "DisplayTexts.h"

namespace telephone {
namespace {

using test::at;
using test::eventText;
using test::Values;

// Draws what happens to calls of the line 4711, and keeps the rows.
class Drawing
{
public:
    explicit Drawing(DisplayOptions const& options)
        : drawing_(options)
    {}

    void heading() { keep(drawing_.heading()); }
    void request(std::string_view time, std::string const& text, std::string_view answer = "sfiSuccess")
    {
        keep(drawing_.request(at(time), text));
        keep(drawing_.answer(at(time), text, answer));
    }
    void reason(std::string_view sentence) { keep(drawing_.reason(sentence)); }
    void event(std::uint64_t number, std::string_view time, std::string_view method, Values values)
    {
        values["LineID"] = "4711";
        keep(drawing_.event(number, at(time), eventText(method, values)));
    }
    void state(std::uint64_t number, std::string_view time, std::string_view call, std::string_view party,
               std::string_view state, std::string_view reason = "0")
    {
        event(number, time, "CallStateChangeEvent",
              {{"CallID", call}, {"URI", party}, {"CallState", state}, {"Reason", reason}});
    }
    void text(std::string_view text) { keep(drawing_.event(1, at("12:00:00.000"), text)); }

    // Each row ends its line.
    [[nodiscard]] std::string const& rows() const { return rows_; }

private:
    void keep(CallDrawing::Rows const& rows)
    {
        for (std::string const& row : rows) {
            rows_ += row + "\n";
        }
    }

    CallDrawing drawing_;
    std::string rows_ = "\n";  // expected texts begin on a line of their own
};

constexpr std::string_view k100 = "sip:100@127.0.0.1:5060";
constexpr std::string_view k103 = "sip:103@127.0.0.1:5060";

std::string request(std::string_view method, std::string_view call, std::string_view destination = "")
{
    return test::element("Method", method) + test::element("Line", "4711") + test::element("CallID", call) +
           (destination.empty() ? "" : test::element("Destination", destination));
}

// A call to 100, held, retrieved, ended.
std::string callTo100(DisplayOptions const& options)
{
    Drawing drawing(options);
    drawing.heading();
    drawing.request("12:00:00.000", request("OutgoingCallMakeRequest", "1", "100"));
    drawing.state(5, "12:00:00.001", "1", k100, "1");
    drawing.state(6, "12:00:00.001", "1", k100, "2");
    drawing.state(7, "12:00:00.001", "1", k100, "3");
    drawing.state(8, "12:00:00.001", "1", k100, "6");
    drawing.request("12:00:00.800", request("HoldCall", "1"));
    drawing.event(9, "12:00:00.801", "CallHeldEvent", {{"CallID", "1"}});
    drawing.request("12:00:01.400", request("RetrieveCall", "1"));
    drawing.event(10, "12:00:01.401", "CallRetrievedEvent", {{"CallID", "1"}, {"URI", k100}});
    drawing.request("12:00:02.100", request("CallClearRequest", "1"));
    drawing.state(11, "12:00:02.101", "1", k100, "0");
    return drawing.rows();
}

TEST(CallDrawing, Call_IsDrawnAsItProgresses)
{
    EXPECT_EQ(callTo100(test::options()), R"(
s   application                                            telephone                         far end
  0.000  │─────────── OutgoingCallMakeRequest 100 ────────────▶│                                  │
         │◀───────────────────── success ──────────────────────│                                  │
  0.001  │◀──────────────── event 5: dialling ─────────────────│────────── call to 100 ──────────▶│
         │◀─────────────── event 6: proceeding ────────────────│                                  │
         │◀───────────── event 7: remote ringing ──────────────│◀──────── 100 is ringing ─────────│
         │◀──────────────── event 8: connected ────────────────│◀────────── 100 answers ──────────│
         │                                                     │════ talk with 100 for 0.8 s ═════│
  0.800  │───────────────── HoldCall, call 1 ─────────────────▶│                                  │
         │◀───────────────────── success ──────────────────────│                                  │
  0.801  │◀────────────────── event 9: held ───────────────────│─────────── hold 100 ────────────▶│
         │                                                     │┄┄┄┄┄ 100 on hold for 0.6 s ┄┄┄┄┄┄│
  1.400  │─────────────── RetrieveCall, call 1 ───────────────▶│                                  │
         │◀───────────────────── success ──────────────────────│                                  │
  1.401  │◀─────────────── event 10: retrieved ────────────────│───────── retrieve 100 ──────────▶│
         │                                                     │════ talk with 100 for 0.7 s ═════│
  2.100  │───────────── CallClearRequest, call 1 ─────────────▶│                                  │
         │◀───────────────────── success ──────────────────────│                                  │
  2.101  │◀────────────────── event 11: idle ──────────────────│───── end the call with 100 ─────▶│
)");
}

TEST(CallDrawing, WithoutUtf8_IsDrawnInAscii)
{
    DisplayOptions options = test::options();
    options.ascii = true;
    EXPECT_EQ(callTo100(options), R"(
s   application                                            telephone                         far end
  0.000  |----------- OutgoingCallMakeRequest 100 ------------>|                                  |
         |<--------------------- success ----------------------|                                  |
  0.001  |<---------------- event 5: dialling -----------------|---------- call to 100 ---------->|
         |<--------------- event 6: proceeding ----------------|                                  |
         |<------------- event 7: remote ringing --------------|<-------- 100 is ringing ---------|
         |<---------------- event 8: connected ----------------|<---------- 100 answers ----------|
         |                                                     |==== talk with 100 for 0.8 s =====|
  0.800  |----------------- HoldCall, call 1 ----------------->|                                  |
         |<--------------------- success ----------------------|                                  |
  0.801  |<------------------ event 9: held -------------------|----------- hold 100 ------------>|
         |                                                     |..... 100 on hold for 0.6 s ......|
  1.400  |--------------- RetrieveCall, call 1 --------------->|                                  |
         |<--------------------- success ----------------------|                                  |
  1.401  |<--------------- event 10: retrieved ----------------|--------- retrieve 100 ---------->|
         |                                                     |==== talk with 100 for 0.7 s =====|
  2.100  |------------- CallClearRequest, call 1 ------------->|                                  |
         |<--------------------- success ----------------------|                                  |
  2.101  |<------------------ event 11: idle ------------------|----- end the call with 100 ----->|
)");
}

TEST(CallDrawing, IncomingCalls_AreAnsweredHereOrEndThere)
{
    Drawing drawing(test::options());
    drawing.event(35, "12:00:00.000", "IncomingCallEvent", {{"CallID", "1001"}, {"URI", k103}, {"CallType", "1"}});
    drawing.state(36, "12:00:00.000", "1001", k103, "5");
    drawing.request("12:00:00.500", request("AnswerCall", "1001"));
    drawing.state(37, "12:00:00.500", "1001", k103, "6");
    drawing.state(38, "12:00:02.000", "1001", k103, "8");
    drawing.state(39, "12:00:03.500", "1001", k103, "0");
    drawing.event(40, "12:00:04.000", "IncomingCallEvent", {{"CallID", "1002"}, {"URI", k100}, {"CallType", "1"}});
    drawing.event(41, "12:00:05.000", "IncomingCallMissedEvent", {{"CallID", "1002"}, {"URI", k100}, {"Reason", "2"}});
    drawing.state(42, "12:00:05.000", "1002", k100, "0", "7");
    EXPECT_EQ(drawing.rows(), R"(
  0.000  │◀──────── event 35: incoming call, internal ─────────│◀─────────── 103 calls ───────────│
         │◀──────────────── event 36: ringing ─────────────────│──────── ringing for 103 ────────▶│
  0.500  │────────────── AnswerCall, call 1001 ───────────────▶│                                  │
         │◀───────────────────── success ──────────────────────│                                  │
         │◀─────────────── event 37: connected ────────────────│────────── answer 103 ───────────▶│
         │                                                     │════ talk with 103 for 1.5 s ═════│
  2.000  │◀───────────── event 38: remotely held ──────────────│◀────── 103 holds the call ───────│
         │                                                     │┄┄┄┄┄ held by 103 for 1.5 s ┄┄┄┄┄┄│
  3.500  │◀────────────────── event 39: idle ──────────────────│◀───────── 103 hangs up ──────────│
  4.000  │◀──────── event 40: incoming call, internal ─────────│◀─────────── 100 calls ───────────│
  5.000  │◀─────────── event 41: missed, no answer ────────────│                                  │
         │◀──────────── event 42: idle, cancelled ─────────────│◀───────── 100 gives up ──────────│
)");
}

TEST(CallDrawing, Conference_IsDrawnForEachParty)
{
    Drawing drawing(test::options());
    drawing.state(15, "12:00:00.000", "1", k100, "6");
    drawing.event(16, "12:00:00.000", "CallHeldEvent", {{"CallID", "1"}});
    drawing.state(17, "12:00:00.000", "2", k103, "6");
    drawing.request("12:00:01.000", "<Method>ConferenceCall</Method><Line>4711</Line><heldCall>1</heldCall>");
    drawing.event(18, "12:00:01.001", "CallRetrievedEvent", {{"CallID", "1"}, {"URI", k100}});
    drawing.state(19, "12:00:01.001", "1", k100, "10");
    drawing.state(20, "12:00:01.001", "2", k103, "10");
    drawing.event(21, "12:00:01.001", "FeatureSuccessEvent", {{"CallID", "1"}, {"Feature", "3"}});
    drawing.event(22, "12:00:01.001", "conferenceStatusEvent",
                  {{"CallID", "1"},
                   {"XMLContent", "<conference-info><users><user entity=\"sip:4711@127.0.0.1\"/>"
                                  "<user entity=\"sip:100@127.0.0.1\"/><user entity=\"sip:103@127.0.0.1\"/></users>"
                                  "</conference-info>"}});
    drawing.state(23, "12:00:02.001", "2", k103, "0", "12");
    EXPECT_EQ(drawing.rows(), R"(
  0.000  │◀─────────────── event 15: connected ────────────────│◀────────── 100 answers ──────────│
         │◀────────────────── event 16: held ──────────────────│─────────── hold 100 ────────────▶│
         │◀─────────────── event 17: connected ────────────────│◀────────── 103 answers ──────────│
         │                                                     │┄┄┄┄┄ 100 on hold for 1.0 s ┄┄┄┄┄┄│
         │                                                     │════ talk with 103 for 1.0 s ═════│
  1.000  │────────────────── ConferenceCall ──────────────────▶│                                  │
         │◀───────────────────── success ──────────────────────│                                  │
  1.001  │◀─────────────── event 18: retrieved ────────────────│───────── retrieve 100 ──────────▶│
         │◀─────────────── event 19: conference ───────────────│                                  │
         │◀─────────────── event 20: conference ───────────────│                                  │
         │◀──────── event 21: feature done, conference ────────│                                  │
         │◀─ event 22: conference, 3 parties: 4711, 100, 103 ──│                                  │
         │                                                     │═ conference with 100 for 1.0 s ══│
         │                                                     │═ conference with 103 for 1.0 s ══│
  2.001  │◀─────────── event 23: idle, transferred ────────────│                                  │
)");
}

TEST(CallDrawing, Refusal_HasACrossAndItsReasonBelow)
{
    Drawing drawing(test::options());
    drawing.request("12:00:00.000", request("HoldCall", "7"), "sfiFailure");
    drawing.reason("line 4711 has no call 7");
    EXPECT_EQ(drawing.rows(), R"(
  0.000  │───────────────── HoldCall, call 7 ─────────────────▶│                                  │
         │◀──────────────────── ✕ failure ─────────────────────│                                  │
         ✕ line 4711 has no call 7
)");
}

TEST(CallDrawing, RefusedEnd_IsNotAnEndFromHere)
{
    Drawing drawing(test::options());
    drawing.state(5, "12:00:00.000", "1", k100, "6");
    drawing.request("12:00:00.000", request("CallClearRequest", "1"), "sfiFailure");
    drawing.state(6, "12:00:00.000", "1", k100, "0");
    EXPECT_EQ(drawing.rows(), R"(
  0.000  │◀──────────────── event 5: connected ────────────────│◀────────── 100 answers ──────────│
         │───────────── CallClearRequest, call 1 ─────────────▶│                                  │
         │◀──────────────────── ✕ failure ─────────────────────│                                  │
         │◀────────────────── event 6: idle ───────────────────│◀───────── 100 hangs up ──────────│
)");
}

TEST(CallDrawing, TextsTooLongOrHarmful_KeepTheColumns)
{
    Drawing drawing(test::options());
    drawing.text("not an event at all, and longer than the column for it \x1b[31m");
    drawing.event(2, "12:00:00.000", "IncomingCallEvent",
                  {{"CallID", "1001"}, {"URI", "sip:averyveryverylongnumber@averylongdomain.example.com"}});
    drawing.event(3, "12:00:00.000", "messageWaitingEvent", {{"avail_info", "2"}, {"type", "1"}});
    EXPECT_EQ(drawing.rows(), R"(
  0.000  │◀─ event 1: not an event at all, and longer than t… ─│                                  │
         │◀────────────── event 2: incoming call ──────────────│◀─ averyveryverylongnumber@aver… ─│
         │◀────────── event 3: mailbox, no messages ───────────│                                  │
)");
}

TEST(CallDrawing, NarrowTerminal_HasNarrowerColumns)
{
    DisplayOptions options = test::options();
    options.width = 80;
    Drawing drawing(options);
    drawing.heading();
    drawing.request("12:00:00.000", request("OutgoingCallMakeRequest", "1", "100"));
    drawing.state(5, "12:00:00.000", "1", k100, "1");
    EXPECT_EQ(drawing.rows(), R"(
s   application                             telephone                     far end
  0.000  │──── OutgoingCallMakeRequest 100 ────▶│                              │
         │◀────────────── success ──────────────│                              │
         │◀───────── event 5: dialling ─────────│──────── call to 100 ────────▶│
)");
}

TEST(CallDrawing, EventOlderThanTheAnswerAboveIt_HasNoEarlierTime)
{
    Drawing drawing(test::options());
    drawing.request("12:00:00.003", request("HoldCall", "1"));
    drawing.event(5, "12:00:00.002", "CallHeldEvent", {{"CallID", "1"}});
    EXPECT_EQ(drawing.rows(), R"(
  0.000  │───────────────── HoldCall, call 1 ─────────────────▶│                                  │
         │◀───────────────────── success ──────────────────────│                                  │
         │◀────────────────── event 5: held ───────────────────│─────── hold the far end ────────▶│
)");
}

}  // namespace
}  // namespace telephone
