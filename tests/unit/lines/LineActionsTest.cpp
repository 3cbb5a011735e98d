#include "telephone/lines/LineActions.h"

#include <future>

#include <gmock/gmock.h>

#include "LinesFixture.h"
#include "ManualWatch.h"
#include "platform/services/DigitAnalysisServiceIfc.h"
#include "telephone/base/Touched.h"
#include "telephone/framework/Refusals.h"

namespace telephone {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LineActionsTest : public LinesFixture
{};

TEST_F(LineActionsTest, KeyOfAnIdleLine_SelectsThatLineAlone)
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

TEST_F(LineActionsTest, Key_AnswersHoldsAndRetrieves_ByTheStateOfItsLine)
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

TEST_F(LineActionsTest, KeyOfALineThatDialsOrIsOutOfService_DoesNothing)
{
    configuration_.lines[1].registers = true;
    build();
    change(1, 5, sfiCallStateDialling);
    lines_->getLine("4711")->keyPressed();
    lines_->getLine("4712")->keyPressed();

    EXPECT_THAT(calls_.takeAsked(), IsEmpty());
    EXPECT_EQ(stateOf("4712"), eLineStateOutOfService);
}

TEST_F(LineActionsTest, HotLine_DialsItsDigitsAtOnce_WhenItsKeyIsPressed)
{
    configuration_.lines[0].hotWarmType = LineData::kHotLine;
    configuration_.lines[0].hotWarmDigits = "103";
    build();
    lines_->getLine("4711")->getLineData()->setHotWarmLineManual(true);
    lines_->getLine("4711")->keyPressed();

    EXPECT_THAT(calls_.takeAsked(), ElementsAre("make 4711 1001 103"));
}

TEST_F(LineActionsTest, HotLine_ThatAnApplicationSeizes_DialsNothing)
{
    configuration_.lines[0].hotWarmType = LineData::kHotLine;
    configuration_.lines[0].hotWarmDigits = "103";
    build();
    lines_->getLine("4711")->keyPressed();

    EXPECT_THAT(calls_.takeAsked(), IsEmpty());
    EXPECT_EQ(stateOf("4711"), eLineStateSelected);
}

TEST_F(LineActionsTest, HotLine_ThatCannotDial_IsIdleAgain)
{
    configuration_.lines[0].hotWarmType = LineData::kHotLine;
    configuration_.lines[0].hotWarmDigits = "103";
    build();
    calls_.refuseAll();
    lines_->getLine("4711")->getLineData()->setHotWarmLineManual(true);
    lines_->getLine("4711")->keyPressed();

    EXPECT_EQ(stateOf("4711"), eLineStateIdle);
}

TEST_F(LineActionsTest, WarmLine_DialsAfterItsDelay)
{
    configuration_.lines[0].hotWarmType = LineData::kWarmLine;
    configuration_.lines[0].hotWarmDigits = "103";
    build(std::chrono::milliseconds(1));
    keepTouched();
    lines_->getLine("4711")->getLineData()->setHotWarmLineManual(true);
    lines_->getLine("4711")->keyPressed();
    std::promise<void> later;
    timers_.start(std::chrono::milliseconds(20), [&later] { later.set_value(); });
    ASSERT_EQ(later.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);

    EXPECT_THAT(calls_.takeAsked(), ElementsAre("make 4711 1001 103"));
    EXPECT_TRUE(touchedNames(Touched::kTimer).contains("warm line dials"));
}

TEST_F(LineActionsTest, WarmLine_AfterTheEnd_DialsNothing)
{
    configuration_.lines[0].hotWarmType = LineData::kWarmLine;
    configuration_.lines[0].hotWarmDigits = "103";
    build(std::chrono::milliseconds(10));
    lines_->getLine("4711")->getLineData()->setHotWarmLineManual(true);
    lines_->getLine("4711")->keyPressed();

    lines_->stop();

    std::promise<void> later;
    timers_.start(std::chrono::milliseconds(50), [&later] { later.set_value(); });
    ASSERT_EQ(later.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);
    EXPECT_THAT(calls_.takeAsked(), IsEmpty());
}

TEST_F(LineActionsTest, WarmLine_ReleasedInTime_DialsNothing)
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

TEST_F(LineActionsTest, DirectStationKey_ActsByItsContext)
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

TEST_F(LineActionsTest, DirectStationKey_WithoutTheNecessaryCall_IsRefused)
{
    configuration_.keys = {{3, "dss", "102", "", false}};
    auto& station = *build().getDSSLineForFPK(3);
    station.dssKeyPressed(eDSSContextConsultation, "", "");
    station.dssKeyPressed(eDSSContextBlindTransfer, "", "");
    station.dssKeyPressed(eDSSContextDeflect, "", "4712");
    station.dssKeyPressed(static_cast<EDSSContext>(99), "", "");

    EXPECT_THAT(calls_.takeAsked(), IsEmpty());
}

TEST_F(LineActionsTest, MonitorOnlyStationKey_NeverActs)
{
    configuration_.keys = {{3, "dss", "102", "", true}, {4, "dss", "4712", "", true}};
    auto& lines = build();
    lines.getDSSLineForFPK(3)->dssKeyPressed(eDSSContextNone, "", "");
    lines.getDSSLineForFPK(4)->dssKeyPressed(eDSSContextNone, "", "");

    EXPECT_THAT(calls_.takeAsked(), IsEmpty());
}

TEST_F(LineActionsTest, BlindTransfer_WithoutAnActiveCall_MovesTheHeldOne)
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

TEST_F(LineActionsTest, LockedPhone_DialsPermittedNumbersOnly)
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

TEST_F(LineActionsTest, DirectStation_CallsItsPartyAndTakesBackItsHeldCall)
{
    configuration_.keys = {{3, "dss", "102", "", false}};
    auto& station = *build().getDSSLineForFPK(3);
    EXPECT_EQ(station.getLineState(), eLineStateUnknown);
    station.keyPressed();
    EXPECT_THAT(calls_.takeAsked(), ElementsAre("make 4711 1001 102"));

    ManualWatch watch;
    lines_->watchParties(watch);
    EXPECT_EQ(station.retrieve(), sfiFailure);
    WatchedParty party;
    party.status = PartyStatus::kBusy;
    party.remoteURI = "sip:anna@127.0.0.1";
    party.dialog = PickupTarget{};
    party.dialog->targetURI = "sip:anna@127.0.0.1:5090";
    watch.tell("102", party);
    EXPECT_EQ(station.getLineState(), eLineStateDSSBusy);
    EXPECT_EQ(station.getLastNotifyRemoteURI(), "sip:anna@127.0.0.1");
    EXPECT_EQ(station.retrieve(), sfiFailure);
    EXPECT_THAT(calls_.takeAsked(), IsEmpty());

    party.status = PartyStatus::kHolding;
    watch.tell("102", party);

    EXPECT_EQ(station.getLineState(), eLineStateHoldElsewhere);
    EXPECT_EQ(station.retrieve(), sfiSuccess);
    EXPECT_THAT(calls_.takeAsked(), ElementsAre("take over 4711 1002 sip:anna@127.0.0.1:5090"));
    watch.tell("102", PartyStatus::kIdle);
    EXPECT_EQ(station.getLineState(), eLineStateIdle);
    watch.tell("102", PartyStatus::kRinging);
    EXPECT_EQ(station.getLineState(), eLineStateRingingElsewhere);
    calls_.refuseAll();
    watch.tell("102", party);
    EXPECT_EQ(station.retrieve(), sfiFailure);
}

TEST_F(LineActionsTest, DirectStation_HasNoFeaturesOfALine)
{
    configuration_.keys = {{3, "dss", "102", "", false}};
    auto& station = *build().getDSSLineForFPK(3);
    Line::serverFeaturesSettings settings{};
    settings.dnd = true;
    RefusalCollector collector;

    station.setDNDConfiguration(true);
    station.setForwardingConfiguration(sfiForwardUnconditional, true, "103", 0);
    station.setMissedCallIndicated(true);
    station.getServerFeaturesSettings(settings);

    EXPECT_EQ(
        collector.take(),
        (std::vector<Refusal>{
            {RefusalKind::kNotSupported, "do-not-disturb cannot be set for 102, which is not a line of this telephone"},
            {RefusalKind::kNotSupported, "forwarding cannot be set for 102, which is not a line of this telephone"},
            {RefusalKind::kNotSupported,
             "the missed-call indication cannot be set for 102, which is not a line of this telephone"}}));
    EXPECT_FALSE(settings.dnd);
    EXPECT_EQ(station.getChildBCALineIdReservedForConsultationCall(), 0);
    EXPECT_EQ(settings_->text("cfu-address"), "");
}

TEST_F(LineActionsTest, KeyOfALine_ThatIsADirectStation_CallsItOnAnother)
{
    configuration_.keys = {{3, "dss", "4712", "", false}};
    build();

    lines_->getDSSLineForFPK(3)->dssKeyPressed(eDSSContextNone, "", "");
    lines_->getLine("4712")->dssKeyPressed(eDSSContextNone, "77", "");

    EXPECT_THAT(calls_.takeAsked(), ElementsAre("make 4711 1001 4712", "make 4711 1002 77"));
}

TEST_F(LineActionsTest, HotLineWithAppearances_DialsOnTheOneThatIsSelected)
{
    configuration_.lines[2].hotWarmType = LineData::kHotLine;
    configuration_.lines[2].hotWarmDigits = "103";
    build();
    lines_->getLine("4713")->getLineData()->setHotWarmLineManual(true);

    lines_->getLine("4713")->keyPressed();

    EXPECT_THAT(calls_.takeAsked(), ElementsAre("make 4713#1 1001 103"));
}

TEST_F(LineActionsTest, HotAndWarmLine_WithoutDigits_SayWhichTheyAre)
{
    configuration_.lines[0].hotWarmType = LineData::kHotLine;
    configuration_.lines[1].hotWarmType = LineData::kWarmLine;
    build();
    RefusalCollector collector;
    for (char const* const line : {"4711", "4712"}) {
        lines_->getLine(line)->getLineData()->setHotWarmLineManual(true);
        lines_->getLine(line)->keyPressed();
    }

    EXPECT_EQ(collector.take(),
              (std::vector<Refusal>{{RefusalKind::kNotFound, "hot line 4711 has no digits to dial"},
                                    {RefusalKind::kNotFound, "warm line 4712 has no digits to dial"}}));
}

TEST_F(LineActionsTest, HotLine_WithoutDigits_IsSelectedOnly)
{
    configuration_.lines[0].hotWarmType = LineData::kHotLine;
    build();

    lines_->getLine("4711")->getLineData()->setHotWarmLineManual(true);
    lines_->getLine("4711")->keyPressed();

    EXPECT_EQ(stateOf("4711"), eLineStateSelected);
    EXPECT_THAT(calls_.takeAsked(), IsEmpty());
}

}  // namespace
}  // namespace telephone
