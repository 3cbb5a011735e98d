// The states of lines and what their keys do.
#include <future>

#include <gmock/gmock.h>

#include "LinesFixture.h"
#include "ManualWatch.h"
#include "platform/framework/Executable.h"
#include "platform/framework/SvcRTEContext.h"
#include "platform/lines/Utility.h"
#include "platform/services/DigitAnalysisServiceIfc.h"
#include "telephone/lines/DssLine.h"

namespace telephone {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LineStatesTest : public LinesFixture
{};

struct StateOfCall
{
    sfiCallState call;
    ELineState line;
};

constexpr StateOfCall kStatesOfCalls[] = {
    {sfiCallStateDialling, eLineStateDialling},
    {sfiCallStateProceeding, eLineStateDialling},
    {sfiCallStateRemoteRinging, eLineStateRemoteRinging},
    {sfiCallStateIncoming, eLineStateRinging},
    {sfiCallStateRinging, eLineStateRinging},
    {sfiCallStateAccepted, eLineStateRinging},
    {sfiCallStateConnected, eLineStateActive},
    {sfiCallStateRemotelyHeld, eLineStateActive},
    {sfiCallStateTransferring, eLineStateActive},
    {sfiCallStateHeld, eLineStateHold},
    {sfiCallStateHeldByBoth, eLineStateHold},
    {sfiCallStateConference, eLineStateConference},
    {sfiCallStateClearing, eLineStateIdle},
    {sfiCallStateIdle, eLineStateIdle},
};

TEST_F(LineStatesTest, State_FollowsTheCall)
{
    build();
    for (auto const& [call, line] : kStatesOfCalls) {
        change(1, 5, call);
        EXPECT_EQ(stateOf("4711"), line) << "call state " << call;
        EXPECT_EQ(stateOf("4712"), eLineStateIdle);
    }
}

TEST_F(LineStatesTest, HeldCall_ForAConsultation_IsStateEight)
{
    build();
    auto call = callOn(1, 5, sfiCallStateHeld);
    call.heldForConsultation = true;
    calls_.change(*lines_, call);

    EXPECT_EQ(stateOf("4711"), 8);
}

TEST_F(LineStatesTest, LineThatRegisters_IsOutOfServiceUntilItIsRegistered)
{
    configuration_.lines[0].registers = true;
    build();
    EXPECT_EQ(stateOf("4711"), eLineStateOutOfService);

    lines_->registrationChanged(1, true);
    EXPECT_EQ(stateOf("4711"), eLineStateIdle);

    change(1, 5, sfiCallStateConnected);
    lines_->registrationChanged(1, false);
    EXPECT_EQ(stateOf("4711"), eLineStateActive);

    change(1, 5, sfiCallStateIdle);
    EXPECT_EQ(stateOf("4711"), eLineStateOutOfService);
}

TEST_F(LineStatesTest, LineOfAppearances_ShowsTheMostPressingOfThem)
{
    build();
    change(129, 1, sfiCallStateHeld);
    EXPECT_EQ(stateOf("4713"), eLineStateHold);
    EXPECT_EQ(stateOf("4713#1"), eLineStateHold);
    EXPECT_EQ(stateOf("4713#2"), eLineStateIdle);

    change(130, 2, sfiCallStateConnected);
    EXPECT_EQ(stateOf("4713"), eLineStateActive);

    offer(131, 1001);
    EXPECT_EQ(stateOf("4713"), eLineStateRinging);
    EXPECT_EQ(lines_->getLineInState(eLineStateRinging, "4713"), lines_->getLine("4713#3"));
    EXPECT_EQ(lines_->getLineInState(eLineStateSelected, "4713"), nullptr);
}

TEST_F(LineStatesTest, IncomingCall_TakesTheFirstFreeAppearance_AndNoneWhenAllAreTaken)
{
    build();
    EXPECT_EQ(lines_->seizeForIncoming(3, 1001), (LineAddress{3, 129, 1, "4713#1"}));
    EXPECT_EQ(lines_->seizeForIncoming(3, 1002), (LineAddress{3, 130, 2, "4713#2"}));
    EXPECT_EQ(lines_->seizeForIncoming(3, 1003), (LineAddress{3, 131, 3, "4713#3"}));
    EXPECT_FALSE(lines_->seizeForIncoming(3, 1004));
    EXPECT_EQ(lines_->seizeForIncoming(1, 1005), (LineAddress{1, 1, 0, "4711"}));
    EXPECT_FALSE(lines_->seizeForIncoming(99, 1006));
}

TEST_F(LineStatesTest, KeyOfAnIdleLine_SelectsIt_AndOnlyThatOne)
{
    build();
    lines_->getLine("4711")->keyPressed();
    EXPECT_EQ(stateOf("4711"), eLineStateSelected);

    lines_->getLine("4713")->keyPressed();
    EXPECT_EQ(stateOf("4711"), eLineStateIdle);
    EXPECT_EQ(stateOf("4713"), eLineStateSelected);
    EXPECT_EQ(lines_->getLineInState(eLineStateSelected, "4713"), lines_->getLine("4713#1"));

    lines_->getLine("4713")->keyPressed();
    EXPECT_EQ(stateOf("4713"), eLineStateIdle);
    EXPECT_THAT(calls_.takeAsked(), IsEmpty());
}

TEST_F(LineStatesTest, CallOnASelectedLine_EndsTheSelection)
{
    build();
    lines_->getLine("4711")->keyPressed();
    change(1, 5, sfiCallStateDialling);
    EXPECT_EQ(stateOf("4711"), eLineStateDialling);

    change(1, 5, sfiCallStateIdle);
    EXPECT_EQ(stateOf("4711"), eLineStateIdle);
}

TEST_F(LineStatesTest, Key_AnswersHoldsAndRetrieves_ByTheStateOfItsLine)
{
    build();
    offer(1, 1001);
    lines_->getLine("4711")->keyPressed();
    change(1, 1001, sfiCallStateConnected);
    lines_->getLine("4711")->keyPressed();
    change(1, 1001, sfiCallStateHeld);
    lines_->getLine("4711")->keyPressed();

    EXPECT_THAT(calls_.takeAsked(), ElementsAre("answer 1001", "hold 1001", "retrieve 1001"));
}

TEST_F(LineStatesTest, KeyOfALineThatDialsOrIsOutOfService_DoesNothing)
{
    configuration_.lines[1].registers = true;
    build();
    change(1, 5, sfiCallStateDialling);
    lines_->getLine("4711")->keyPressed();
    lines_->getLine("4712")->keyPressed();

    EXPECT_THAT(calls_.takeAsked(), IsEmpty());
    EXPECT_EQ(stateOf("4712"), eLineStateOutOfService);
}

TEST_F(LineStatesTest, HotLine_DialsItsDigitsAtOnce_WhenItsKeyIsPressed)
{
    configuration_.lines[0].hotWarmType = LineData::kHotLine;
    configuration_.lines[0].hotWarmDigits = "103";
    build();
    lines_->getLine("4711")->getLineData()->setHotWarmLineManual(true);
    lines_->getLine("4711")->keyPressed();

    EXPECT_THAT(calls_.takeAsked(), ElementsAre("make 4711 1001 103"));
}

TEST_F(LineStatesTest, HotLine_ThatAnApplicationSeizes_DialsNothing)
{
    configuration_.lines[0].hotWarmType = LineData::kHotLine;
    configuration_.lines[0].hotWarmDigits = "103";
    build();
    lines_->getLine("4711")->keyPressed();

    EXPECT_THAT(calls_.takeAsked(), IsEmpty());
    EXPECT_EQ(stateOf("4711"), eLineStateSelected);
}

TEST_F(LineStatesTest, HotLine_ThatCannotDial_IsIdleAgain)
{
    configuration_.lines[0].hotWarmType = LineData::kHotLine;
    configuration_.lines[0].hotWarmDigits = "103";
    build();
    calls_.answerWith(sfiFailure);
    lines_->getLine("4711")->getLineData()->setHotWarmLineManual(true);
    lines_->getLine("4711")->keyPressed();

    EXPECT_EQ(stateOf("4711"), eLineStateIdle);
}

TEST_F(LineStatesTest, WarmLine_DialsAfterItsDelay)
{
    configuration_.lines[0].hotWarmType = LineData::kWarmLine;
    configuration_.lines[0].hotWarmDigits = "103";
    build(std::chrono::milliseconds(1));
    lines_->getLine("4711")->getLineData()->setHotWarmLineManual(true);
    lines_->getLine("4711")->keyPressed();
    std::promise<void> later;
    timers_.start(std::chrono::milliseconds(20), [&later] { later.set_value(); });
    ASSERT_EQ(later.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);

    EXPECT_THAT(calls_.takeAsked(), ElementsAre("make 4711 1001 103"));
}

TEST_F(LineStatesTest, WarmLine_ThatIsGivenBackInTime_DialsNothing)
{
    configuration_.lines[0].hotWarmType = LineData::kWarmLine;
    configuration_.lines[0].hotWarmDigits = "103";
    build(std::chrono::milliseconds(10));
    lines_->getLine("4711")->getLineData()->setHotWarmLineManual(true);
    lines_->getLine("4711")->keyPressed();
    lines_->getLine("4711")->keyPressed();
    std::promise<void> later;
    timers_.start(std::chrono::milliseconds(50), [&later] { later.set_value(); });
    ASSERT_EQ(later.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);

    EXPECT_THAT(calls_.takeAsked(), IsEmpty());
}

TEST_F(LineStatesTest, LocalHeldLine_IsTheFirstWithACallOnHold)
{
    build();
    EXPECT_EQ(lines_->getLocalHeldLine(), "");
    change(1, 1, sfiCallStateConnected);
    change(130, 2, sfiCallStateHeld);

    EXPECT_EQ(lines_->getLocalHeldLine(), "4713#2");
    EXPECT_EQ(lines_->getLine(lines_->getLocalHeldLine())->getLineID(), 130);
}

TEST_F(LineStatesTest, LocallyIdleLine_IsThereWhileAnAppearanceHasNoCall)
{
    build();
    change(1, 1, sfiCallStateConnected);
    change(2, 2, sfiCallStateHeld);
    change(129, 3, sfiCallStateHeld);
    change(130, 4, sfiCallStateHeld);
    EXPECT_TRUE(lines_->isLocallyIdleLine());

    change(131, 5, sfiCallStateHeld);
    EXPECT_FALSE(lines_->isLocallyIdleLine());
}

TEST_F(LineStatesTest, DirectStationKey_ActsByItsContext)
{
    configuration_.keys = {{3, "dss", "102", "", false}};
    auto& station = *build().getDSSLineForFPK(3);

    station.dssKeyPressed(eDSSContextNone, "", "");
    station.dssKeyPressed(eDSSContextPickup, "", "");
    offer(2, 1001);
    station.dssKeyPressed(eDSSContextDeflect, "", "4712");
    change(1, 7, sfiCallStateConnected);
    station.dssKeyPressed(eDSSContextConsultation, "", "");
    station.dssKeyPressed(eDSSContextBlindTransfer, "", "");
    station.dssKeyPressed(eDSSContextBlindTransfer, "55", "");

    EXPECT_THAT(calls_.takeAsked(), ElementsAre("make 4711 1001 102", "pickup 4711 1002 102", "deflect 1001 102",
                                                "consult 4711 1003 102", "transfer 7 102", "transfer 7 55"));
}

TEST_F(LineStatesTest, DirectStationKey_WithoutTheCallItNeeds_DoesNothing)
{
    configuration_.keys = {{3, "dss", "102", "", false}};
    auto& station = *build().getDSSLineForFPK(3);
    station.dssKeyPressed(eDSSContextConsultation, "", "");
    station.dssKeyPressed(eDSSContextBlindTransfer, "", "");
    station.dssKeyPressed(eDSSContextDeflect, "", "4712");
    station.dssKeyPressed(static_cast<EDSSContext>(99), "", "");

    EXPECT_THAT(calls_.takeAsked(), IsEmpty());
}

TEST_F(LineStatesTest, DirectStationKey_ThatOnlyShows_NeverActs)
{
    configuration_.keys = {{3, "dss", "102", "", true}, {4, "dss", "4712", "", true}};
    auto& lines = build();
    lines.getDSSLineForFPK(3)->dssKeyPressed(eDSSContextNone, "", "");
    lines.getDSSLineForFPK(4)->dssKeyPressed(eDSSContextNone, "", "");

    EXPECT_THAT(calls_.takeAsked(), IsEmpty());
}

TEST_F(LineStatesTest, BlindTransfer_WithoutAnActiveCall_MovesTheHeldOne)
{
    configuration_.keys = {{3, "dss", "102", "", false}};
    auto& station = *build().getDSSLineForFPK(3);
    change(1, 7, sfiCallStateHeld);
    station.dssKeyPressed(eDSSContextBlindTransfer, "", "");

    EXPECT_THAT(calls_.takeAsked(), ElementsAre("transfer 7 102"));
}

class PermitsEmergency final : public DigitAnalysisServiceIfc
{
public:
    bool isPermittedNumber(std::string const& number) override { return number == "112"; }
    bool isPermittedNumberInContext(std::string const&, int) override { return false; }
    void queryNumberFlag(std::string const&, std::string&) override {}
};

TEST_F(LineStatesTest, LockedPhone_DialsPermittedNumbersOnly)
{
    configuration_.keys = {{3, "dss", "102", "", false}, {4, "dss", "112", "", false}};
    auto& lines = build();
    PermitsEmergency analysis;
    lines.setDigitAnalysisService(&analysis);
    ASSERT_TRUE(settings_->set("phone-locked", "true"));
    lines.getDSSLineForFPK(3)->dssKeyPressed(eDSSContextNone, "", "");
    lines.getDSSLineForFPK(4)->dssKeyPressed(eDSSContextNone, "", "");

    EXPECT_THAT(calls_.takeAsked(), ElementsAre("make 4711 1001 112"));
    lines.setDigitAnalysisService(nullptr);
}

WatchedParty party(PartyStatus status)
{
    WatchedParty watched;
    watched.status = status;
    watched.remoteURI = "sip:caller@127.0.0.1";
    watched.dialog = PickupTarget{"sip:caller@127.0.0.1:5090", {"id", "to", "from", false}, "", "", "", ""};
    return watched;
}

TEST_F(LineStatesTest, SharedLine_ShowsWhatOtherTelephonesDoOnIt)
{
    configuration_.lines[1].sharedLineType = LineData::kSharedLine;
    build();
    ManualWatch watch;
    lines_->watchParties(watch);
    ASSERT_EQ(watch.listeners.size(), 1U);
    auto const notice = [&watch](WatchedParty const& party) { watch.tell("4712", party); };

    notice(party(PartyStatus::kRinging));
    EXPECT_EQ(stateOf("4712"), eLineStateRingingElsewhere);
    notice(party(PartyStatus::kBusy));
    EXPECT_EQ(stateOf("4712"), eLineStateActiveElsewhere);
    EXPECT_EQ(lines_->getLine("4712")->getLastNotifyRemoteURI(), "sip:caller@127.0.0.1");
    notice(party(PartyStatus::kHolding));
    EXPECT_EQ(stateOf("4712"), eLineStateHoldElsewhere);
    notice(party(PartyStatus::kIdle));
    EXPECT_EQ(stateOf("4712"), eLineStateIdle);
}

TEST_F(LineStatesTest, CallHeldElsewhere_IsTakenBackByItsDialog)
{
    configuration_.lines[1].sharedLineType = LineData::kSharedLine;
    build();
    ManualWatch watch;
    lines_->watchParties(watch);
    EXPECT_EQ(lines_->getLine("4712")->retrieve(), sfiFailure);

    watch.tell("4712", party(PartyStatus::kHolding));
    EXPECT_EQ(lines_->getLine("4712")->retrieve(), sfiSuccess);
    EXPECT_THAT(calls_.takeAsked(), ElementsAre("take over 4712 1001 sip:caller@127.0.0.1:5090"));
}

TEST_F(LineStatesTest, LineInUseElsewhere_IsNotSeized)
{
    configuration_.lines[1].sharedLineType = LineData::kSharedLine;
    build();
    ManualWatch watch;
    lines_->watchParties(watch);
    watch.tell("4712", party(PartyStatus::kBusy));

    std::lock_guard const lock(calls_);
    EXPECT_FALSE(lines_->seize(*lines_->find("4712"), eLineStateSelected));
    EXPECT_FALSE(Utility::bridgeCall(lines_->getLine("4712")));
    EXPECT_FALSE(Utility::bridgeCall(nullptr));
}

TEST_F(LineStatesTest, NoticesOfASharedLine_AreOwnCallsWhileThereIsOneHere)
{
    configuration_.lines[1].sharedLineType = LineData::kSharedLine;
    build();
    ManualWatch watch;
    lines_->watchParties(watch);
    change(2, 5, sfiCallStateHeld);
    watch.tell("4712", party(PartyStatus::kBusy));

    EXPECT_EQ(stateOf("4712"), eLineStateHold);
}

TEST_F(LineStatesTest, DirectStationLine_IsStateSixWhileItsPartyIsInACall)
{
    configuration_.keys = {{3, "dss", "102", "", false}};
    build();
    ManualWatch watch;
    lines_->watchParties(watch);
    watch.tell("102", party(PartyStatus::kBusy));

    EXPECT_EQ(stateOf("102"), 6);
    EXPECT_EQ(lines_->getLine("102")->getLastNotifyRemoteURI(), "sip:caller@127.0.0.1");
}

class Observer final : public Executable, public LineObserver
{
public:
    void init(Context&) override {}
    void shutdown() override {}
    void lineStateChanged(std::string const& lineURI, ELineState state, std::string const&) override
    {
        std::lock_guard const lock(mutex);
        seen.push_back(lineURI + " " + std::to_string(state));
        lockHeld = lockHeld || calls->isLockedByCaller();
        changed.notify_all();
    }
    bool waitFor(std::size_t count)
    {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, std::chrono::seconds(10), [this, count] { return seen.size() >= count; });
    }

    FakeCalls* calls = nullptr;
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::string> seen;
    bool lockHeld = false;
};

class NoObserver final : public Executable
{
public:
    void init(Context&) override {}
    void shutdown() override {}
};

TEST_F(LineStatesTest, Observer_HearsOfEachChangeInOrder_AndOfTheOverviewAgain)
{
    build();
    Observer observer;
    observer.calls = &calls_;
    NoObserver other;
    ASSERT_TRUE(lines_->observe(&observer));
    ASSERT_TRUE(lines_->observe(&observer));
    EXPECT_FALSE(lines_->observe(&other));
    EXPECT_FALSE(lines_->observe(nullptr));

    change(1, 5, sfiCallStateDialling);
    change(1, 5, sfiCallStateConnected);
    change(1, 5, sfiCallStateIdle);
    lines_->requestOverviewData("4713");
    lines_->requestOverviewData("4799");

    ASSERT_TRUE(observer.waitFor(7));
    lines_->stop();
    EXPECT_THAT(observer.seen, ElementsAre("4711 2", "4711 5", "4711 1", "4713 1", "4713#1 1", "4713#2 1", "4713#3 1"));
    EXPECT_FALSE(observer.lockHeld);
}

TEST(UtilityTest, BusyStates_AreThoseThatCarryACall_ButNotTheHoldForAConsultation)
{
    for (auto const state :
         {eLineStateDialling, eLineStateRemoteRinging, eLineStateRinging, eLineStateActive, eLineStateDSSBusy,
          eLineStateHold, eLineStateConference, eLineStateHoldElsewhere, eLineStateActiveElsewhere,
          eLineStateConferenceHoldElsewhere, eLineStateRingingElsewhere}) {
        EXPECT_TRUE(Utility::isLineStateBusy(state)) << state;
    }
    for (auto const state : {eLineStateUnknown, eLineStateIdle, eLineStateHoldConsult, eLineStateOutOfService,
                             eLineStateSelected, eLineStateReserved, static_cast<ELineState>(99)}) {
        EXPECT_FALSE(Utility::isLineStateBusy(state)) << state;
    }
}

}  // namespace
}  // namespace telephone
