#include "telephone/analysis/Ladder.h"

#include <spdlog/fmt/fmt.h>

#include "TraceTexts.h"

namespace telephone {
namespace {

using test::options;
using test::requestText;
using test::TraceText;

constexpr std::size_t kMostFarEnds = 6;

constexpr std::string_view kFar = "sip:100@127.0.0.1:5060";
constexpr std::string_view kOther = "sip:103@127.0.0.1:5060";

Ladder ladderFor(TraceText const& trace, std::optional<std::string_view> call = std::nullopt)
{
    return *ladderOf(trace.contents(), call, kMostFarEnds, options());
}

// "0>1 HoldCall": an arrow from the first to the second column.
std::vector<std::string> rowsOf(TraceText const& trace)
{
    std::vector<std::string> rows;
    for (LadderRow const& each : ladderFor(trace).rows) {
        rows.push_back(fmt::format("{}>{} {}", each.from, each.to, each.text));
    }
    return rows;
}

using Rows = std::vector<std::string>;

TEST(Ladder, Time_IsAPauseFrom100Milliseconds)
{
    for (auto const& [second, pauses] : {std::pair("00.099", 0U), std::pair("00.100", 1U)}) {
        TraceText trace;
        trace.engine(0, 1, "", "connected").request(requestText("HoldCall", "1"));
        trace.at(second).request(requestText("HoldCall", "1"));
        Ladder const ladder = ladderFor(trace);
        EXPECT_EQ(ladder.rows.size(), 2U + pauses) << second;
    }
}

TEST(Ladder, StateOfACall_SaysWhatItsFarEndDoesMeanwhile)
{
    struct Row
    {
        std::string_view state;
        std::string_view text;
        bool isOnHold;
        bool isTalk;
    };
    // clang-format off
    for (auto const& [state, text, isOnHold, isTalk] : {
             Row{"remote ringing", "it rings for 1.5 s",  false, false},
             Row{"ringing",        "it rings for 1.5 s",  false, false},
             Row{"connected",      "they talk for 1.5 s", false, true},
             Row{"conference",     "they talk for 1.5 s", false, true},
             Row{"held",           "on hold for 1.5 s",   true,  false},
             Row{"remotely held",  "on hold for 1.5 s",   true,  false},
             Row{"held by both",   "on hold for 1.5 s",   true,  false},
         }) {
        // clang-format on
        TraceText trace;
        trace.engine(0, 1, "", state).request(requestText("HoldCall", "1"));
        trace.at("01.500").request(requestText("HoldCall", "1"));
        Ladder const ladder = ladderFor(trace);
        ASSERT_EQ(ladder.rows.size(), 3U) << state;
        LadderRow const& pause = ladder.rows[1];
        EXPECT_EQ(pause.kind, LadderRowKind::kPause) << state;
        EXPECT_EQ(pause.text, "1.5 s");
        EXPECT_EQ(pause.time, std::chrono::milliseconds(0));
        ASSERT_EQ(pause.pauses.size(), 1U) << state;
        EXPECT_EQ(pause.pauses[0].column, 3U);
        EXPECT_EQ(pause.pauses[0].text, text) << state;
        EXPECT_EQ(pause.pauses[0].isOnHold, isOnHold) << state;
        EXPECT_EQ(pause.pauses[0].isTalk, isTalk) << state;
    }
}

TEST(Ladder, CallThatIsNotThereYet_OrOver_DoesNothingMeanwhile)
{
    for (std::string_view const state : {"dialling", "idle", "failed"}) {
        TraceText trace;
        trace.engine(0, 1, "", "connected").engine(0, 1, "connected", state);
        trace.request(requestText("HoldCall", "1")).at("01.000").request(requestText("HoldCall", "1"));
        Ladder const ladder = ladderFor(trace);
        ASSERT_EQ(ladder.rows.size(), 3U) << state;
        EXPECT_TRUE(ladder.rows[1].pauses.empty()) << state;
        EXPECT_TRUE(ladder.bars.empty()) << state;
    }
}

TEST(Ladder, SeveralCallsWithOneFarEnd_ShowTheOneThatTalks)
{
    for (auto const& [first, second] : {std::pair("held", "connected"), std::pair("connected", "held")}) {
        TraceText trace;
        trace.engine(0, 1, "", first, kFar, "d1").engine(0, 2, "", second, kFar, "d2");
        trace.request(requestText("HoldCall", "1")).at("01.000").request(requestText("HoldCall", "1"));
        Ladder const ladder = ladderFor(trace);
        ASSERT_EQ(ladder.rows.size(), 3U);
        ASSERT_EQ(ladder.rows[1].pauses.size(), 1U);
        EXPECT_EQ(ladder.rows[1].pauses[0].text, "they talk for 1.0 s");
    }
}

TEST(Ladder, StateWithoutADialog_IsOfTheFarEndOfItsCall)
{
    TraceText trace;
    trace.engine(0, 1, "", "connected").request(requestText("HoldCall", "1"));
    trace.step(0, R"("step":"engine","line":"4711","call":1,"before":"connected","state":"held")");
    trace.at("01.000").request(requestText("CallClearRequest", "1"));
    Ladder const ladder = ladderFor(trace);
    ASSERT_EQ(ladder.rows.size(), 3U);
    ASSERT_EQ(ladder.rows[1].pauses.size(), 1U);
    EXPECT_EQ(ladder.rows[1].pauses[0].text, "on hold for 1.0 s");
}

TEST(Ladder, Bars_LastFromTheMessageThatChangedTheCallToTheNext)
{
    TraceText trace;
    trace.sip(0, "sent", "INVITE").sip(1, "received", "INVITE", "200 OK").sip(2, "sent", "ACK");  // rows 0-2
    trace.engine(2, 1, "", "connected").request(requestText("HoldCall", "1"));                    // row 3
    trace.sip(5, "sent", "INVITE", "", "d1", "sendonly").sip(6, "received", "INVITE", "200 OK");  // rows 4, 5
    trace.engine(7, 1, "connected", "held").request(requestText("RetrieveCall", "1"));            // row 6
    trace.sip(9, "sent", "INVITE").sip(10, "received", "INVITE", "200 OK");                       // rows 7, 8
    trace.engine(11, 1, "held", "connected").request(requestText("GenerateDigitsRequest", "1"));  // row 9
    Ladder const ladder = ladderFor(trace);
    ASSERT_EQ(ladder.rows.size(), 10U);
    std::vector<std::string> bars;
    for (LadderBar const& each : ladder.bars) {
        bars.push_back(fmt::format("{}: {} to {} {}", each.column, each.first, each.end, each.isOnHold));
    }
    EXPECT_EQ(bars, (Rows{"3: 1 to 5 false", "3: 5 to 8 true", "3: 8 to 9 false"}));
}

TEST(Ladder, BarOfNoRow_IsLeftOut)
{
    TraceText trace;
    trace.sip(0, "received", "INVITE", "200 OK").engine(1, 1, "", "connected").engine(1, 1, "connected", "held");
    trace.engine(1, 1, "held", "idle");
    EXPECT_TRUE(ladderFor(trace).bars.empty());
    EXPECT_TRUE(ladderFor(TraceText().engine(0, 1, "", "connected")).bars.empty());
}

TEST(Ladder, Title_SaysWhoCalledWhom)
{
    // clang-format off
    for (auto const& [state, party, title] : {
             std::tuple("dialling",       kFar, "A call to 100"),
             std::tuple("incoming",       kFar, "A call from 100"),
             std::tuple("ringing",        kFar, "A call from 100"),
             std::tuple("connected",      kFar, "A call with 100"),
             std::tuple("remote ringing", kFar, "A call with 100"),
             std::tuple("dialling",       std::string_view(), "A call to an unknown party"),
         }) {
        // clang-format on
        EXPECT_EQ(ladderFor(TraceText().engine(0, 1, "", state, party)).title, title) << state;
    }
    TraceText trace;
    trace.engine(0, 1, "", "dialling", kFar, "d1").engine(0, 2, "", "incoming", kOther, "d2");
    EXPECT_EQ(ladderFor(trace).title, "Calls to 100, from 103");
    EXPECT_EQ(ladderFor(trace, "2").title, "A call from 103");
}

TEST(Ladder, TitleOfMoreThanEightCalls_IsTheirNumber)
{
    TraceText trace;
    for (int call = 1; call <= 8; ++call) {
        trace.engine(0, call, "", "dialling", kFar, "d" + std::to_string(call));
    }
    EXPECT_EQ(ladderFor(trace).title, "Calls to 100, to 100, to 100, to 100, to 100, to 100, to 100, to 100");
    trace.engine(0, 9, "", "dialling", kFar, "d9");
    EXPECT_EQ(ladderFor(trace).title, "9 calls");
}

TEST(Ladder, PlatformCallThatActsOnTheCall_IsDrawn)
{
    // clang-format off
    for (std::string_view const name : {
             "CSfi::CallMake", "CSfi::GroupPickup", "CSfi::CallClear", "CSfi::CallRetrieve", "CSfi::CallAccept",
             "CSfi::CallAnswer", "CSfi::CallRefuse", "CSfi::CallFeature", "CSfi::GenerateDigits",
             "CSfi::ActivateCallbackRinging", "CSfi::ActivateCallbackBusy", "CSfi::CancelCallbacks",
             "CSfi::SecurityChangeReinvite", "DirectedPickupHandler::directedPickupRequest",
             "TeamServiceFeatures::BLFPickupRequest", "TeamServiceKeyset::answerCall", "TeamServiceKeyset::makeCall",
             "TeamServiceKeyset::retrieveCall"}) {
        // clang-format on
        TraceText trace;
        trace.engine(0, 1, "", "connected").platform(0, name, R"("callID":1)");
        Rows const expected{"1>2 " + std::string(name.substr(name.find("::") + 2))};
        EXPECT_EQ(rowsOf(trace), expected);
        // As well when it names no call, if it led to something about the call.
        trace = TraceText().platform(0, name, "").engine(1, 1, "", "connected");
        EXPECT_EQ(rowsOf(trace), expected);
        // Not without either.
        trace = TraceText().platform(0, name, R"("callID":2)").engine(0, 1, "", "connected");
        EXPECT_EQ(rowsOf(trace), Rows());
    }
    TraceText trace;
    trace.platform(0, "CSfi::GetCallState", R"("callID":1)").engine(1, 1, "", "connected");
    EXPECT_EQ(rowsOf(trace), Rows());
}

TEST(Ladder, PlatformCallThatFails_HasARowBack)
{
    TraceText trace;
    trace.engine(0, 1, "", "connected");
    trace.step(0, R"("step":"platform","name":"CSfi::CallClear","arguments":{"callID":1},"result":"sfiFailure")");
    EXPECT_EQ(rowsOf(trace), (Rows{"1>2 CallClear", "2>1 ✕ failure"}));
    EXPECT_EQ(ladderFor(trace).rows[0].kind, LadderRowKind::kPlatform);
    EXPECT_EQ(ladderFor(trace).rows[1].kind, LadderRowKind::kFailure);
}

TEST(Ladder, Answer_IsAFailureIfItSaysSo)
{
    TraceText trace;
    trace.request(requestText("HoldCall", "1")).answer(1, "sfiFailure").engine(1, 1, "", "connected");
    trace.request(requestText("HoldCall", "1")).answer(4, "sfiSuccess");
    EXPECT_EQ(rowsOf(trace), (Rows{"0>1 HoldCall", "1>0 ✕ failure", "0>1 HoldCall", "1>0 success"}));
    EXPECT_EQ(ladderFor(trace).rows[1].kind, LadderRowKind::kFailure);
    EXPECT_EQ(ladderFor(trace).rows[3].kind, LadderRowKind::kAnswer);
}

TEST(Ladder, KeyOfAPerson_IsDrawn_AndThatOfACommandIsNot)
{
    TraceText trace;
    trace.step(0, R"("step":"key","key":1,"label":"4711","action":"pressed")").engine(1, 1, "", "dialling");
    trace.step(0, R"("step":"command","application":"panel","text":"press 1")");
    trace.step(3, R"("step":"key","key":1,"label":"4711","action":"pressed")").engine(4, 1, "dialling", "idle");
    trace.step(0, R"("step":"key","key":2,"label":"Hold","action":"pressed")");
    EXPECT_EQ(rowsOf(trace), (Rows{"0>1 key 1 \"4711\" pressed", "0>1 press 1"}));
}

TEST(Ladder, TimersAndFaultsThatLedToSomething_AreNotesOfTheEngine)
{
    TraceText trace;
    trace.step(0, R"("step":"fault","fault":"far end silent","state":"begins")");
    trace.step(1, R"("step":"timer","name":"call is refreshed")").engine(2, 1, "", "idle");
    trace.step(0, R"("step":"fault","fault":"lamps stuck","state":"begins")");
    trace.step(0, R"("step":"timer","name":"key repeats")");
    EXPECT_EQ(rowsOf(trace), (Rows{"2>2 fault: far end silent begins", "2>2 timer: call is refreshed"}));
    EXPECT_EQ(ladderFor(trace).rows[0].kind, LadderRowKind::kNote);
    EXPECT_EQ(ladderFor(trace).rows[1].kind, LadderRowKind::kNote);
}

TEST(Ladder, SeveralApplications_AreNamedAtTheirRequests)
{
    TraceText trace;
    trace.engine(0, 1, "", "connected").request(requestText("HoldCall", "1"));
    EXPECT_EQ(rowsOf(trace), Rows{"0>1 HoldCall"});
    EXPECT_EQ(ladderFor(trace).columns, (Rows{"application", "service", "engine", "100"}));
    trace.step(0, R"("step":"request","application":"panel","text":")" + requestText("HoldCall", "1") + "\"");
    EXPECT_EQ(rowsOf(trace), (Rows{"0>1 console: HoldCall", "0>1 panel: HoldCall"}));
    EXPECT_EQ(ladderFor(trace).columns, (Rows{"applications", "service", "engine", "100"}));
}

TEST(Ladder, SeveralCalls_AreNamedAtRequestsAndEvents)
{
    TraceText trace;
    trace.engine(0, 1, "", "connected", kFar, "d1").request(requestText("HoldCall", "1"));
    trace.event(0, 7, "<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>1</CallID>");
    EXPECT_EQ(rowsOf(trace), (Rows{"0>1 HoldCall", "1>0 event 7: held"}));
    EXPECT_FALSE(ladderFor(trace).hasSeveralCalls);
    trace.engine(0, 2, "", "connected", kOther, "d2");
    EXPECT_EQ(rowsOf(trace), (Rows{"0>1 HoldCall, call 1", "1>0 event 7, call 1: held"}));
    EXPECT_TRUE(ladderFor(trace).hasSeveralCalls);
}

TEST(Ladder, ClockThatIsSetBack_DoesNotTurnTheRowsBack)
{
    TraceText trace;
    trace.engine(0, 1, "", "connected").at("05.000").request(requestText("HoldCall", "1"));
    trace.at("02.000").request(requestText("RetrieveCall", "1"));
    trace.at("05.050").request(requestText("HoldCall", "1"));
    Ladder const ladder = ladderFor(trace);
    ASSERT_EQ(ladder.rows.size(), 3U);
    EXPECT_EQ(ladder.rows[0].time, std::chrono::milliseconds(0));
    EXPECT_EQ(ladder.rows[1].time, std::chrono::milliseconds(0));
    EXPECT_EQ(ladder.rows[2].time, std::chrono::milliseconds(50));
}

TEST(Ladder, MessageWithTheSameTransaction_IsSentAgainOnlyIfAllElseIsTheSame)
{
    auto const message = [](std::string_view direction, std::string_view method, std::string_view status,
                            std::string_view transaction) {
        return fmt::format(
            R"("step":"sip","direction":"{}","method":"{}",{}"dialog":"d1","transaction":"{}","phrase":"OK")",
            direction, method, status.empty() ? "" : fmt::format("\"status\":{},", status), transaction);
    };
    TraceText trace;
    trace.engine(0, 1, "", "dialling");
    trace.step(0, message("sent", "INVITE", "", "a")).step(0, message("received", "INVITE", "", "a"));
    trace.step(0, message("sent", "ACK", "", "a")).step(0, message("sent", "INVITE", "", "b"));
    trace.step(0, message("sent", "INVITE", "200", "a")).step(0, message("sent", "INVITE", "200", "a"));
    trace.step(0, message("sent", "INVITE", "", "")).step(0, message("sent", "INVITE", "", ""));
    EXPECT_EQ(rowsOf(trace), (Rows{"2>3 INVITE", "3>2 INVITE", "2>3 ACK", "2>3 INVITE", "2>3 200 OK",
                                   "2>3 200 OK again", "2>3 INVITE", "2>3 INVITE"}));
}

TEST(Ladder, FarEndsThatShareAColumn_AreNamedAtTheirFirstMessage)
{
    TraceText trace;
    trace.engine(0, 1, "", "dialling", kFar, "d1").sip(0, "sent", "INVITE", "", "d1");
    trace.engine(0, 2, "", "dialling", kOther, "d2").sip(0, "sent", "INVITE", "", "d2").sip(0, "sent", "BYE", "", "d2");
    Ladder const ladder = *ladderOf(trace.contents(), std::nullopt, 1, options());
    EXPECT_EQ(ladder.columns, (Rows{"application", "service", "engine", "100, 103"}));
    ASSERT_EQ(ladder.rows.size(), 3U);
    EXPECT_EQ(ladder.rows[0].text, "INVITE, 100");
    EXPECT_EQ(ladder.rows[1].text, "INVITE, 103");
    EXPECT_EQ(ladder.rows[2].text, "BYE");
    // Each has a column of its own where there is room.
    EXPECT_EQ(ladderOf(trace.contents(), std::nullopt, 2, options())->columns,
              (Rows{"application", "service", "engine", "100", "103"}));
}

TEST(Ladder, FurtherFarEnd_SharesTheColumnThatHasBeenFreeForLongest)
{
    constexpr std::string_view kThird = "sip:199@127.0.0.1:5060";
    TraceText trace;
    trace.engine(0, 1, "", "dialling", kFar, "d1").engine(0, 2, "", "dialling", kOther, "d2");
    trace.engine(0, 2, "dialling", "idle", kOther, "d2").engine(0, 1, "dialling", "idle", kFar, "d1");
    trace.engine(0, 3, "", "dialling", kThird, "d3");
    EXPECT_EQ(ladderOf(trace.contents(), std::nullopt, 2, options())->columns,
              (Rows{"application", "service", "engine", "100", "103, 199"}));
}

TEST(Ladder, ProvisionalAnswers_AreDrawnButForTrying)
{
    TraceText trace;
    trace.engine(0, 1, "", "dialling").sip(0, "received", "INVITE", "100 Trying");
    trace.sip(0, "received", "INVITE", "101 Dialog").sip(0, "received", "INVITE", "183 Progress");
    trace.sip(0, "received", "OPTIONS", "200 OK", "other");
    EXPECT_EQ(rowsOf(trace), (Rows{"3>2 101 Dialog", "3>2 183 Progress"}));
}

}  // namespace
}  // namespace telephone
