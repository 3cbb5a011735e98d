#include "telephone/lines/TelephoneLine.h"

#include <gmock/gmock.h>

#include "LinesFixture.h"
#include "ManualWatch.h"
#include "platform/lines/Utility.h"

namespace telephone {
namespace {

using testing::ElementsAre;

class TelephoneLineTest : public LinesFixture
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

TEST_F(TelephoneLineTest, State_FollowsTheCall)
{
    build();
    for (auto const& [call, line] : kStatesOfCalls) {
        change(1, 5, call);
        EXPECT_EQ(stateOf("4711"), line) << "call state " << call;
        EXPECT_EQ(stateOf("4712"), eLineStateIdle);
    }
}

TEST_F(TelephoneLineTest, HeldCall_ForAConsultation_IsStateEight)
{
    build();
    auto call = callOn(1, 5, sfiCallStateHeld);
    call.heldForConsultation = true;
    calls_.change(*lines_, call);

    EXPECT_EQ(stateOf("4711"), 8);
}

TEST_F(TelephoneLineTest, LineThatRegisters_IsOutOfServiceUntilItIsRegistered)
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

TEST_F(TelephoneLineTest, LineWithAppearances_ShowsTheirMostPressingState)
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

TEST_F(TelephoneLineTest, CallOnASelectedLine_EndsTheSelection)
{
    build();
    lines_->getLine("4711")->keyPressed();
    change(1, 5, sfiCallStateDialling);
    EXPECT_EQ(stateOf("4711"), eLineStateDialling);

    change(1, 5, sfiCallStateIdle);
    EXPECT_EQ(stateOf("4711"), eLineStateIdle);
}

WatchedParty party(PartyStatus status)
{
    WatchedParty watched;
    watched.status = status;
    watched.remoteURI = "sip:caller@127.0.0.1";
    watched.dialog = PickupTarget{"sip:caller@127.0.0.1:5090", {"id", "to", "from", false}, "", "", "", ""};
    return watched;
}

TEST_F(TelephoneLineTest, SharedLine_ShowsTheCallsOfOtherTelephones)
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

TEST_F(TelephoneLineTest, CallHeldElsewhere_IsTakenBackByItsDialog)
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

TEST_F(TelephoneLineTest, CallElsewhere_OfALineWithAppearances_IsOnTheOnesThatItsNoticeNames)
{
    configuration_.lines[2].sharedLineType = LineData::kSharedLine;
    build();
    ManualWatch watch;
    lines_->watchParties(watch);
    WatchedParty held = party(PartyStatus::kHolding);
    held.appearances = {WatchedParty(), party(PartyStatus::kHolding)};

    watch.tell("4713", held);
    EXPECT_EQ(stateOf("4713#1"), eLineStateIdle);
    EXPECT_EQ(stateOf("4713#2"), eLineStateHoldElsewhere);
    EXPECT_EQ(stateOf("4713#3"), eLineStateIdle);
    EXPECT_EQ(table_->appearances().seizeForIncoming(3, 1001), 129);
    EXPECT_EQ(table_->appearances().seizeForIncoming(3, 1002), 131);

    watch.tell("4713", party(PartyStatus::kIdle));
    EXPECT_EQ(stateOf("4713#2"), eLineStateIdle);
    EXPECT_EQ(table_->appearances().seizeForIncoming(3, 1003), 130);
}

TEST_F(TelephoneLineTest, FarEnd_OfALineStaysTheLastThatWasNamed)
{
    build();
    auto call = callOn(1, 5, sfiCallStateConnected);
    calls_.change(*lines_, call);
    EXPECT_EQ(lines_->getLine("4711")->getLastNotifyRemoteURI(), "sip:100@127.0.0.1");

    call.remoteURI = "";
    calls_.change(*lines_, call);

    EXPECT_EQ(lines_->getLine("4711")->getLastNotifyRemoteURI(), "sip:100@127.0.0.1");
}

TEST_F(TelephoneLineTest, ActiveCallElsewhere_IsJoinedOnABridgedLineOnly)
{
    configuration_.lines[1].sharedLineType = LineData::kBridgedLine;
    build();
    ManualWatch watch;
    lines_->watchParties(watch);
    auto watched = party(PartyStatus::kHolding);
    watched.join = PickupTarget{"sip:4712@127.0.0.1:5091", {"id", "from", "to", false}, "", "", "", "", true};
    watch.tell("4712", watched);
    EXPECT_FALSE(Utility::bridgeCall(lines_->getLine("4712"))) << "it is held";

    watched.status = PartyStatus::kBusy;
    watch.tell("4712", watched);
    EXPECT_TRUE(Utility::bridgeCall(lines_->getLine("4712")));
    EXPECT_THAT(calls_.takeAsked(), ElementsAre("take over 4712 1001 sip:4712@127.0.0.1:5091"));
}

TEST_F(TelephoneLineTest, PrivateCallElsewhere_IsNeitherTakenBackNorJoined)
{
    configuration_.lines[1].sharedLineType = LineData::kBridgedLine;
    build();
    ManualWatch watch;
    lines_->watchParties(watch);
    auto watched = party(PartyStatus::kHolding);
    watched.isPrivate = true;

    watch.tell("4712", watched);
    EXPECT_EQ(lines_->getLine("4712")->retrieve(), sfiFailure);
    watched.status = PartyStatus::kBusy;
    watch.tell("4712", watched);
    EXPECT_FALSE(Utility::bridgeCall(lines_->getLine("4712")));

    EXPECT_THAT(calls_.takeAsked(), ElementsAre());
}

TEST_F(TelephoneLineTest, LineInUseElsewhere_IsNotSeized)
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

TEST_F(TelephoneLineTest, NoticesOfASharedLine_AreIgnoredDuringALocalCall)
{
    configuration_.lines[1].sharedLineType = LineData::kSharedLine;
    build();
    ManualWatch watch;
    lines_->watchParties(watch);
    change(2, 5, sfiCallStateHeld);
    watch.tell("4712", party(PartyStatus::kBusy));

    EXPECT_EQ(stateOf("4712"), eLineStateHold);
}

TEST_F(TelephoneLineTest, DirectStationLine_IsStateSixWhileItsPartyIsInACall)
{
    configuration_.keys = {{3, "dss", "102", "", false}};
    build();
    ManualWatch watch;
    lines_->watchParties(watch);
    watch.tell("102", party(PartyStatus::kBusy));

    EXPECT_EQ(stateOf("102"), 6);
    EXPECT_EQ(lines_->getLine("102")->getLastNotifyRemoteURI(), "sip:caller@127.0.0.1");
}

}  // namespace
}  // namespace telephone
