// What presses of keys and the hook switch do, through the service.
#include <gmock/gmock.h>

#include "KeysFixture.h"
#include "platform/services/DigitAnalysisServiceIfc.h"
#include "telephone/lines/DssLine.h"

namespace telephone {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class KeyApplicationTest : public KeysFixture
{};

TEST_F(KeyApplicationTest, LineKey_GoesThroughTheService)
{
    buildKeys();
    press(1);

    EXPECT_THAT(service_.takeNoted(), ElementsAre("line key 1"));
    EXPECT_EQ(stateOf("4711"), eLineStateSelected);
    EXPECT_EQ(lamp("1"), "steady");
}

TEST_F(KeyApplicationTest, StationKey_TakesItsContextFromTheCallsThereAre)
{
    buildKeys();
    press(4);
    changeCall(1, 5, sfiCallStateConnected);
    press(4);
    application_->setTransferMode(true);
    press(4);
    press(4);
    changeCall(1, 5, sfiCallStateIdle);
    offer(130, 1001);
    press(4);

    EXPECT_THAT(service_.takeNoted(), ElementsAre("dss 4 context 0 ", "dss 4 context 1 ", "dss 4 context 2 ",
                                                  "dss 4 context 1 ", "dss 4 context 3 4713#2"));
}

TEST_F(KeyApplicationTest, StationKey_WhosePartyIsCalled_PicksUp)
{
    buildKeys();
    WatchedParty party;
    party.status = PartyStatus::kRinging;
    {
        std::lock_guard const lock(calls_);
        lines_->stations().front()->setParty(party);
    }
    EXPECT_EQ(lamp("4"), "flashing");
    press(4);

    EXPECT_THAT(service_.takeNoted(), ElementsAre("dss 4 context 4 "));
}

TEST_F(KeyApplicationTest, BusyLampKey_TellsWhetherATransferWasChosen)
{
    buildKeys();
    press(5);
    press(14);
    EXPECT_EQ(lamp("transfer"), "steady");
    press(5);
    EXPECT_EQ(lamp("transfer"), "off");
    press(14);
    press(14);
    press(5);

    EXPECT_THAT(service_.takeNoted(), ElementsAre("blf 5", "blf 5 transfer", "blf 5"));
}

TEST_F(KeyApplicationTest, ToggleAndMuteKeys_GoThroughTheService)
{
    buildKeys();
    press(11);
    press(9);
    EXPECT_EQ(lamp("mute"), "steady");
    press(9);
    EXPECT_EQ(lamp("mute"), "off");

    EXPECT_THAT(service_.takeNoted(), ElementsAre("toggle 11", "mute", "unmute"));
}

TEST_F(KeyApplicationTest, HookUp_AnswersTheCallThatRings)
{
    buildKeys();
    offer(2, 1001);
    hook(true);

    EXPECT_THAT(service_.takeNoted(), ElementsAre("answer 4712 1001"));
}

TEST_F(KeyApplicationTest, HookUp_WithoutACall_SeizesThePrimaryLine_AndDownGivesItBack)
{
    buildKeys();
    hook(true);
    EXPECT_EQ(stateOf("4711"), eLineStateSelected);
    hook(false);
    EXPECT_EQ(stateOf("4711"), eLineStateIdle);

    EXPECT_THAT(service_.takeNoted(), ElementsAre("line 4711"));
}

TEST_F(KeyApplicationTest, HookUp_WhileThePrimaryLineIsInUse_SeizesAnother)
{
    buildKeys();
    changeCall(1, 5, sfiCallStateHeld);
    hook(true);

    EXPECT_EQ(stateOf("4712"), eLineStateSelected);
    EXPECT_EQ(stateOf("4711"), eLineStateHold);
}

TEST_F(KeyApplicationTest, HookDown_ClearsTheCallThatSpeaks_NotTheOneOnHold)
{
    buildKeys();
    changeCall(1, 5, sfiCallStateHeld);
    changeCall(2, 6, sfiCallStateConnected);
    hook(true);
    hook(false);

    EXPECT_THAT(service_.takeNoted(), ElementsAre("clear 4712 6 1"));
}

TEST_F(KeyApplicationTest, ReleaseKey_ClearsTheCallThatDials)
{
    buildKeys();
    changeCall(1, 5, sfiCallStateDialling);
    press(12);

    EXPECT_THAT(service_.takeNoted(), ElementsAre("clear 4711 5 1"));
}

TEST_F(KeyApplicationTest, HeadsetKey_IsAHookSwitch_WhileAHeadsetIsPlugged)
{
    buildKeys();
    press(10);
    EXPECT_THAT(service_.takeNoted(), IsEmpty());
    EXPECT_EQ(lamp("headset"), "off");

    EXPECT_FALSE(physical_->plug("headset", true));
    physical_->flush();
    EXPECT_EQ(lamp("headset"), "steady");
    offer(1, 1001);
    press(10);
    changeCall(1, 1001, sfiCallStateConnected);
    press(10);

    EXPECT_THAT(service_.takeNoted(), ElementsAre("answer 4711 1001", "clear 4711 1001 1"));
}

TEST_F(KeyApplicationTest, KeysWithoutAService_DoNothing)
{
    buildKeys();
    application_->setService(nullptr);
    for (int const key : {1, 4, 5, 9, 11, 12}) {
        press(key);
    }
    hook(true);

    EXPECT_THAT(service_.takeNoted(), IsEmpty());
    EXPECT_THAT(calls_.takeAsked(), IsEmpty());
}

class PermitsStation final : public DigitAnalysisServiceIfc
{
public:
    bool isPermittedNumber(std::string const&) override { return false; }
    bool isPermittedNumberInContext(std::string const& number, int context) override
    {
        return number == "102" && context == 0;
    }
    void queryNumberFlag(std::string const&, std::string&) override {}
};

TEST_F(KeyApplicationTest, LockedPhone_TakesOnlyKeysThatDialAPermittedNumber)
{
    buildKeys();
    PermitsStation analysis;
    lines_->setDigitAnalysisService(&analysis);
    EXPECT_FALSE(physical_->setLocked(true));
    for (int const key : {1, 4, 5, 9, 11, 12}) {
        press(key);
    }
    EXPECT_THAT(service_.takeNoted(), ElementsAre("dss 4 context 0 "));
    EXPECT_EQ(stateOf("4711"), eLineStateIdle);

    EXPECT_FALSE(physical_->setLocked(false));
    press(1);
    EXPECT_THAT(service_.takeNoted(), ElementsAre("line key 1"));
}

TEST_F(KeyApplicationTest, LockedPhone_StillAnswersByTheHookSwitch)
{
    buildKeys();
    EXPECT_FALSE(physical_->setLocked(true));
    offer(1, 1001);
    hook(true);

    EXPECT_THAT(service_.takeNoted(), ElementsAre("answer 4711 1001"));
}

class KeyLampsTest : public KeysFixture
{};

struct LampOfCall
{
    sfiCallState call;
    std::string mode;
};

TEST_F(KeyLampsTest, LineLamp_FollowsItsCalls)
{
    buildKeys();
    for (auto const& [state, mode] :
         {LampOfCall{sfiCallStateDialling, "steady"}, LampOfCall{sfiCallStateRinging, "flashing"},
          LampOfCall{sfiCallStateConnected, "steady"}, LampOfCall{sfiCallStateHeld, "fluttering"},
          LampOfCall{sfiCallStateConference, "steady"}, LampOfCall{sfiCallStateIdle, "off"}}) {
        changeCall(129, 5, state);
        EXPECT_EQ(lamp("3"), mode) << state;
        EXPECT_EQ(lamp("1"), "off");
    }
}

TEST_F(KeyLampsTest, HoldLamp_FlashesWhileACallIsOnHold)
{
    buildKeys();
    changeCall(1, 5, sfiCallStateConnected);
    EXPECT_EQ(lamp("hold"), "off");
    changeCall(1, 5, sfiCallStateHeld);
    EXPECT_EQ(lamp("hold"), "flashing");
    EXPECT_EQ(lamp("Hold"), "flashing");
    changeCall(1, 5, sfiCallStateIdle);
    EXPECT_EQ(lamp("hold"), "off");
}

TEST_F(KeyLampsTest, HoldLamp_ThatAnApplicationSet_StaysUntilSomethingIsHeldOrNotAnyMore)
{
    buildKeys();
    physical_->setLamp(10, PhysDefs::lampSteady, PhysDefs::lampGreen, 0);
    changeCall(1, 5, sfiCallStateConnected);
    EXPECT_EQ(lamp("Hold"), "steady");
    changeCall(1, 5, sfiCallStateHeld);
    EXPECT_EQ(lamp("Hold"), "flashing");
}

TEST_F(KeyLampsTest, SecondAlert_FlashesWhileACallRingsBesideAnActiveOne)
{
    buildKeys();
    changeCall(1, 5, sfiCallStateConnected);
    changeCall(2, 1001, sfiCallStateRinging);
    EXPECT_EQ(lamp("SecondAlert"), "flashing");
    changeCall(1, 5, sfiCallStateIdle);
    EXPECT_EQ(lamp("SecondAlert"), "off");
}

TEST_F(KeyLampsTest, FeatureLamps_FollowTheStore)
{
    buildKeys();
    EXPECT_EQ(lamp("dnd"), "off");
    ASSERT_TRUE(settings_->set("call-dnd-activated", "true"));
    EXPECT_EQ(lamp("dnd"), "steady");
    ASSERT_TRUE(settings_->set("cfnr-ext-activated", "true"));
    EXPECT_EQ(lamp("forwarding"), "steady");
    ASSERT_TRUE(settings_->set("cfnr-ext-activated", "false"));
    EXPECT_EQ(lamp("forwarding"), "off");
    ASSERT_TRUE(settings_->set("feature-toggle/11", "true"));
    EXPECT_EQ(lamp("toggle"), "steady");
    ASSERT_TRUE(settings_->set("feature-toggle/11", "false"));
    EXPECT_EQ(lamp("toggle"), "off");
}

TEST_F(KeyLampsTest, MessagesLamp_IsOnWhileAnyLineHasMessages)
{
    buildKeys();
    sfiMessageWaitingRecord waiting{};
    waiting.messagesWaiting = sfiMessagesWaitingYes;
    sfiMessageWaitingRecord const none{};
    std::lock_guard const lock(calls_);
    lamps_->messageWaitingChanged(1, waiting);
    lamps_->messageWaitingChanged(2, waiting);
    lamps_->messageWaitingChanged(1, none);
    EXPECT_EQ(lamp("messages"), "steady");
    lamps_->messageWaitingChanged(2, none);
    EXPECT_EQ(lamp("messages"), "off");
}

TEST_F(KeyLampsTest, IgnoredCall_RingsWithoutFlashing_AndAMissedOneIsShown)
{
    buildKeys();
    offer(1, 1001);
    EXPECT_EQ(lamp("1"), "flashing");
    {
        std::lock_guard const lock(calls_);
        EXPECT_TRUE(lines_->silence(*lines_->find("4711")));
    }
    EXPECT_EQ(lamp("1"), "steady");
    changeCall(1, 1001, sfiCallStateIdle);
    EXPECT_EQ(lamp("1"), "off");

    lines_->getLine("4711")->setMissedCallIndicated(true);
    EXPECT_EQ(lamp("1"), "flashing");
    lines_->getLine("4711")->setMissedCallIndicated(false);
    EXPECT_EQ(lamp("1"), "off");
}

}  // namespace
}  // namespace telephone
