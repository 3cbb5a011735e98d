#include "telephone/analysis/LadderText.h"

#include <algorithm>

#include "TraceTexts.h"

namespace telephone {
namespace {

using test::held;
using test::options;
using test::requestText;
using test::TraceText;

std::string ladder(TraceText const& trace, DisplayOptions const& shown = options(),
                   std::optional<std::string_view> call = std::nullopt)
{
    auto const drawn = ladderOf(trace.contents(), call, kMostFarEndsInText, shown);
    if (!drawn) {
        return "refused: " + drawn.error().reason;
    }
    std::string text = "\n";
    for (std::string const& line : ladderText(*drawn, shown)) {
        text += line + "\n";
    }
    return text;
}

// Calls to 100, to 103 while 100 is on hold, and to 199 when both are over.
TraceText threeCalls()
{
    TraceText trace;
    std::string const far[] = {"sip:100@127.0.0.1:5060", "sip:103@127.0.0.1:5060", "sip:199@example.com"};
    trace.sip(0, "sent", "INVITE", "", "d1").sip(1, "received", "INVITE", "200 OK", "d1");
    trace.engine(2, 1, "", "connected", far[0], "d1");
    trace.at("01.000").sip(0, "sent", "INVITE", "", "d1", "sendonly").sip(4, "received", "INVITE", "200 OK", "d1");
    trace.engine(5, 1, "connected", "held", far[0], "d1");
    trace.request(requestText("Consult", "2", "103")).sip(7, "sent", "INVITE", "", "d2");
    trace.sip(8, "received", "INVITE", "180 Ringing", "d2").engine(9, 2, "", "remote ringing", far[1], "d2");
    trace.at("03.000").sip(8, "received", "INVITE", "200 OK", "d2").sip(11, "sent", "ACK", "", "d2");
    trace.engine(11, 2, "remote ringing", "connected", far[1], "d2")
        .event(11, 5,
               test::eventText("CallStateChangeEvent", {{"LineID", "4711"}, {"CallID", "2"}, {"CallState", "6"}}));
    trace.at("04.500").sip(0, "received", "BYE", "", "d2").engine(15, 2, "connected", "idle", far[1], "d2");
    trace.sip(0, "received", "BYE", "", "d1").engine(17, 1, "held", "idle", far[0], "d1");
    trace.at("05.000").sip(0, "sent", "INVITE", "", "d3").engine(19, 3, "", "dialling", far[2], "d3");
    return trace;
}

TEST(LadderText, Hold_IsDrawn)
{
    EXPECT_EQ(ladder(held()), R"(
s   application                          service                 engine                          100
  0.000  │── OutgoingCallMakeRequest 100 ──▶│                       │                             │
         │                                  │──── CallMake 100 ────▶│                             │
         │                                  │                       │────────── INVITE ──────────▶│
         │◀──────────── success ────────────│                       │                             │
  0.001  │                                  │                       │◀────────── 200 OK ──────────│
         │                                  │                       │─────────── ACK ────────────▶║
         │                                  │                       │════ they talk for 1.2 s ════║
  1.201  │─────────── HoldCall ────────────▶│                       │                             ║
         │                                  │── CallFeature hold ──▶│                             ║
         │                                  │                       │───── INVITE sendonly ──────▶║
         │◀──────────── success ────────────│                       │                             ║
         │                                  │                       │◀───── 200 OK recvonly ──────║
         │                                  │                       │─────────── ACK ────────────▶┊
         │◀───────── event 9: held ─────────│                       │                             ┊
         │                                  │                       │┄┄┄┄┄ on hold for 1.3 s ┄┄┄┄┄┊
  2.500  │                                  │                       │◀─────────── BYE ────────────┊
         │                                  │                       │────────── 200 OK ──────────▶│
)");
}

TEST(LadderText, NarrowTerminalWithoutUtf8_GetsNarrowColumnsInAscii)
{
    DisplayOptions shown = options();
    shown.ascii = true;
    shown.width = 80;
    std::string const text = ladder(held(), shown);
    EXPECT_EQ(text.substr(0, text.find("\n  1.201")), R"(
s   application                  service           engine                    100
  0.000  |- OutgoingCallMakeRe... ->|                 |                       |
         |                          |- CallMake 100 ->|                       |
         |                          |                 |------- INVITE ------->|
         |<-------- success --------|                 |                       |
  0.001  |                          |                 |<------- 200 OK -------|
         |                          |                 |-------- ACK --------->#
         |                          |                 |= they talk for 1.2 s =#)");
    EXPECT_TRUE(
        std::all_of(text.begin(), text.end(), [](char each) { return each == '\n' || (each >= ' ' && each <= '~'); }));
}

TEST(LadderText, SeveralCalls_ShareTheColumnsOfFarEnds)
{
    EXPECT_EQ(ladder(threeCalls()), R"(
s   application                          service                 engine                          100                 103, 199@example.com
  0.000  │                                  │                       │────────── INVITE ──────────▶│                            │
         │                                  │                       │◀────────── 200 OK ──────────│                            │
         │                                  │                       │════ they talk for 1.0 s ════║                            │
  1.000  │                                  │                       │───── INVITE sendonly ──────▶║                            │
         │                                  │                       │◀────────── 200 OK ──────────║                            │
         │────────── Consult 103 ──────────▶│                       │                             ┊                            │
         │                                  │                       │─────────────────────────────┼─────── INVITE, 103 ───────▶│
         │                                  │                       │◀────────────────────────────┼─────── 180 Ringing ────────│
         │                                  │                       │┄┄┄┄┄ on hold for 2.0 s ┄┄┄┄┄┊     it rings for 2.0 s     │
  3.000  │                                  │                       │◀────────────────────────────┼────────── 200 OK ──────────│
         │                                  │                       │─────────────────────────────┼─────────── ACK ───────────▶║
         │◀── event 5, call 2: connected ───│                       │                             ┊                            ║
         │                                  │                       │┄┄┄┄┄ on hold for 1.5 s ┄┄┄┄┄┊═══ they talk for 1.5 s ════║
  4.500  │                                  │                       │◀────────────────────────────┼─────────── BYE ────────────║
         │                                  │                       │◀─────────── BYE ────────────┊                            │
         │           0.5 s later            │                       │                             │                            │
  5.000  │                                  │                       │─────────────────────────────┼─ INVITE, 199@example.com ─▶│
)");
}

TEST(LadderText, OneOfSeveralCalls_IsDrawnAlone)
{
    EXPECT_EQ(ladder(threeCalls(), options(), "2"), R"(
s   application                          service                 engine                          103
  0.000  │────────── Consult 103 ──────────▶│                       │                             │
         │                                  │                       │────────── INVITE ──────────▶│
         │                                  │                       │◀─────── 180 Ringing ────────│
         │                                  │                       │     it rings for 2.0 s      │
  2.000  │                                  │                       │◀────────── 200 OK ──────────│
         │                                  │                       │─────────── ACK ────────────▶║
         │◀────── event 5: connected ───────│                       │                             ║
         │                                  │                       │════ they talk for 1.5 s ════║
  3.500  │                                  │                       │◀─────────── BYE ────────────║
)");
}

TEST(LadderText, Refusal_IsACrossWithItsReason)
{
    TraceText trace = held();
    trace.at("02.600").request(requestText("RetrieveCall", "3"));
    int const request = trace.number();
    trace.platform(request, "TeamServiceKeyset::retrieveCall", R"("lineURI":"4711","callID":3)");
    trace.answer(request, "sfiFailure").step(request, R"("step":"reason","text":"line 4711 has no call 3 <any more>")");
    std::string const text = ladder(trace);
    EXPECT_EQ(text.substr(text.find("\n  2.600")), R"(
  2.600  │───────── RetrieveCall ──────────▶│                       │                             │
         │                                  │──── retrieveCall ────▶│                             │
         │◀─────────── ✕ failure ───────────│                       │                             │
         ✕ line 4711 has no call 3 <any more>
)");
}

TEST(LadderText, TimerAndCommand_HaveRows)
{
    TraceText trace;
    trace.step(0, R"("step":"command","application":"console","text":"call 4711 from 100")");
    trace.sip(1, "received", "INVITE").sip(2, "sent", "INVITE", "180 Ringing").engine(2, 1001, "", "ringing");
    trace.at("15.000").step(2, R"("step":"timer","name":"nobody answers a forwarded line")");
    trace.sip(5, "sent", "INVITE", "302 Moved Temporarily").engine(5, 1001, "ringing", "idle");
    EXPECT_EQ(ladder(trace), R"(
s   application                          service                 engine                          100
  0.000  │────── call 4711 from 100 ───────▶│                       │                             │
         │                                  │                       │◀────────── INVITE ──────────│
         │                                  │                       │─────── 180 Ringing ────────▶│
         │                                  │                       │     it rings for 15.0 s     │
         timer: nobody answers a forwarded line
 15.000  │                                  │                       │── 302 Moved Temporarily ───▶│
)");
}

TEST(LadderText, OtherTraffic_StaysOut)
{
    TraceText trace = held();
    std::string const alone = ladder(trace);
    trace.at("00.500").sip(0, "sent", "REGISTER", "", "r1").request("<Method>GetDevices</Method>");
    trace.platform(trace.number(), "CSfi::GetServiceState", "").event(0, 1, "<Method>DevicesChangedEvent</Method>");
    trace.lamp(0, 3, "Hold", "off", "none");
    EXPECT_EQ(ladder(trace), alone);
}

TEST(LadderText, MessageThatIsSentAgain_SaysSo)
{
    TraceText trace;
    trace.engine(0, 1, "", "dialling");
    for (int time = 0; time < 2; ++time) {
        trace.step(0, R"("step":"sip","direction":"sent","method":"INVITE","dialog":"d1","transaction":"z9hG4bK1")");
    }
    std::string const text = ladder(trace);
    EXPECT_NE(text.find("─ INVITE ─"), std::string::npos);
    EXPECT_NE(text.find("─ INVITE again ─"), std::string::npos);
}

TEST(LadderText, CallWithoutMessages_HasAFarEnd)
{
    TraceText trace;
    trace.engine(0, 1, "", "connected").request(requestText("HoldCall", "1"));
    trace.at("01.000").request(requestText("CallClearRequest", "1"));
    EXPECT_EQ(ladder(trace), R"(
s   application                          service                 engine                          100
  0.000  │─────────── HoldCall ────────────▶│                       │                             │
         │                                  │                       │════ they talk for 1.0 s ════║
  1.000  │─────── CallClearRequest ────────▶│                       │                             ║
)");
    trace = TraceText().request(requestText("HoldCall", "1"));
    trace.step(1, R"("step":"engine","line":"4711","call":1,"state":"connected")");
    EXPECT_EQ(ladder(trace), R"(
s   application                          service                 engine
  0.000  │─────────── HoldCall ────────────▶│                       │
)");
}

TEST(LadderText, TraceWithoutTheCall_IsRefused)
{
    EXPECT_EQ(ladder(TraceText().request("<Method>GetDevices</Method>")), "refused: hold.trace has no calls");
    EXPECT_EQ(ladder(threeCalls(), options(), "9"), "refused: hold.trace has no call 9; it has: 1, 2, 3");
}

TEST(LadderText, TextsFromTheWire_CannotControlTheTerminal)
{
    std::string const evil = R"(\u001b[2J\u202e)";
    TraceText trace;
    trace.step(0, R"("step":"command","application":")" + evil + R"(","text":")" + evil + "\"");
    trace.sip(1, evil, evil, "200 " + evil, "d1", evil).engine(2, 3, "", "connected", evil);
    trace.step(1, R"("step":"key","key":1,"label":")" + evil + R"(","action":")" + evil + "\"").engine(4, 3, "x", evil);
    trace.step(1, R"("step":"reason","text":")" + evil + "\"").answer(1, evil);
    std::string const text = ladder(trace);
    EXPECT_NE(text.find("\\x1b[2J\\u{202e}"), std::string::npos);
    EXPECT_EQ(text.find('\x1b'), std::string::npos);
    EXPECT_EQ(text.find("\u202e"), std::string::npos);
}

// Where the bars of a line in ASCII stand.
std::vector<std::size_t> barsOf(std::string const& line)
{
    std::vector<std::size_t> places;
    for (std::size_t place = line.find('|'); place != std::string::npos; place = line.find('|', place + 1)) {
        places.push_back(place);
    }
    return places;
}

Ladder ladderWith(LadderRow row, std::size_t columns = 4)
{
    Ladder ladder;
    ladder.columns = {"application", "service", "engine", "100", "103"};
    ladder.columns.resize(columns);
    ladder.rows = {std::move(row)};
    return ladder;
}

std::vector<std::size_t> barsFor(Ladder const& ladder, std::size_t width = 0)
{
    DisplayOptions shown = options();
    shown.ascii = true;
    shown.width = width;
    return barsOf(ladderText(ladder, shown).at(1));
}

using Places = std::vector<std::size_t>;

TEST(LadderText, LongText_WidensItsGapByAtMostSixteen)
{
    auto const withText = [](std::size_t from, std::size_t to, std::size_t length) {
        return ladderWith({LadderRowKind::kSip, from, to, std::string(length, 'x'), {}}, 5);
    };
    EXPECT_EQ(barsFor(withText(0, 1, 29)), (Places{9, 44, 68, 98, 122}));
    EXPECT_EQ(barsFor(withText(0, 1, 30)), (Places{9, 45, 69, 99, 123}));
    EXPECT_EQ(barsFor(withText(1, 0, 45)), (Places{9, 60, 84, 114, 138}));
    EXPECT_EQ(barsFor(withText(1, 0, 46)), (Places{9, 60, 84, 114, 138}));
    EXPECT_EQ(barsFor(withText(1, 2, 19)), (Places{9, 44, 69, 99, 123}));
    // The text stands next to the far end.
    EXPECT_EQ(barsFor(withText(4, 2, 19)), (Places{9, 44, 68, 123}));
    // A note crosses no gap.
    Ladder note = withText(1, 1, 40);
    note.rows.push_back({LadderRowKind::kSip, 0, 1, "x", {}});
    note.rows.erase(note.rows.begin());
    EXPECT_EQ(barsFor(note), (Places{9, 44, 68, 98, 122}));
}

TEST(LadderText, Terminal_NarrowsTheColumnsIfItHasNoRoomForThem)
{
    Ladder const ladder = ladderWith({LadderRowKind::kSip, 0, 1, "x", {}});
    EXPECT_EQ(barsFor(ladder, 99), (Places{9, 44, 68, 98}));
    EXPECT_EQ(barsFor(ladder, 98), (Places{9, 43, 66, 95}));
    // No narrower than their texts need; the line is cut then.
    EXPECT_EQ(barsFor(ladder, 60), (Places{9, 28, 43}));
    EXPECT_EQ(barsFor(ladder, 10), Places{});
}

TEST(LadderText, Rows_HaveTheStylesOfTheirKinds)
{
    DisplayOptions shown = options();
    shown.colour = true;
    // clang-format off
    for (auto const& [kind, style] : {
             std::pair(LadderRowKind::kRequest,  "\x1b[34m"), std::pair(LadderRowKind::kAnswer,   ""),
             std::pair(LadderRowKind::kFailure,  "\x1b[35m"), std::pair(LadderRowKind::kEvent,    "\x1b[1m"),
             std::pair(LadderRowKind::kPlatform, ""),         std::pair(LadderRowKind::kSip,      ""),
         }) {
        // clang-format on
        std::string const line = ladderText(ladderWith({kind, 0, 1, "text", {}}), shown).at(1);
        EXPECT_EQ(line.find(std::string("│") + style + "─"), 9U) << style;
    }
    LadderRow const pause{LadderRowKind::kPause, 0, 0, "2.0 s", {}};
    std::string const line = ladderText(ladderWith(pause), shown).at(1);
    EXPECT_EQ(line.find("│\x1b[2m  "), 9U);
    EXPECT_NE(line.find(" 2.0 s later "), std::string::npos);
}

TEST(LadderText, Notes_ReasonsAreMagenta_OthersArePlain)
{
    DisplayOptions shown = options();
    shown.colour = true;
    EXPECT_EQ(ladderText(ladderWith({LadderRowKind::kNote, 0, 0, "reason", {}}), shown).at(1),
              "         \x1b[35mreason\x1b[0m");
    EXPECT_EQ(ladderText(ladderWith({LadderRowKind::kNote, 2, 2, "timer", {}}), shown).at(1), "         timer");
}

TEST(LadderText, Time_StandsWhereItChanges_AndHasNoMillisecondsFromTenThousandSeconds)
{
    using std::chrono::milliseconds;
    Ladder ladder = ladderWith({LadderRowKind::kSip, 0, 1, "x", milliseconds(9'999'999)});
    for (int const time : {9'999'999, 10'000'000, 10'000'400, 12'345'600}) {
        ladder.rows.push_back({LadderRowKind::kSip, 0, 1, "x", milliseconds(time)});
    }
    std::vector<std::string> times;
    for (std::string const& each : ladderText(ladder, options())) {
        times.push_back(each.substr(0, 9));
    }
    times.erase(times.begin());
    EXPECT_EQ(times, (std::vector<std::string>{"9999.999 ", "         ", "  10000  ", "         ", "  12346  "}));
}

TEST(LadderText, ArrowThatCrossesABar_IsDrawnThroughIt)
{
    DisplayOptions shown = options();
    shown.ascii = true;
    EXPECT_EQ(ladderText(ladderWith({LadderRowKind::kSip, 2, 4, "INVITE", {}}, 5), shown).at(1),
              "  0.000  |                                  |                       |-----------------------------+"
              "------- INVITE ------->|");
    EXPECT_EQ(ladderText(ladderWith({LadderRowKind::kSip, 4, 2, "200 OK", {}}, 5), shown).at(1),
              "  0.000  |                                  |                       |<----------------------------+"
              "------- 200 OK --------|");
}

TEST(LadderText, Bar_IsDrawnBehindItsFirstRowUpToItsEnd)
{
    Ladder ladder = ladderWith({LadderRowKind::kSip, 0, 1, "x", {}});
    ladder.rows.resize(5, ladder.rows.front());
    ladder.bars = {{3, 1, 2, false}, {3, 2, 3, true}};
    std::string last;
    DisplayOptions shown = options();
    shown.ascii = true;
    for (std::string const& each : ladderText(ladder, shown)) {
        last += each.back();
    }
    EXPECT_EQ(last.substr(1), "||#:|");
}

}  // namespace
}  // namespace telephone
