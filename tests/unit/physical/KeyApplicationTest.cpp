#include "telephone/physical/KeyApplication.h"

#include <gmock/gmock.h>

#include "KeysFixture.h"
#include "platform/services/DigitAnalysisServiceIfc.h"
#include "telephone/lines/DssLine.h"
#include "tests/helpers/LogFile.h"

namespace telephone {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
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

TEST_F(KeyApplicationTest, StationKey_TakesItsContextFromTheCalls)
{
    buildKeys();
    press(4);
    changeCall(1, 5, sfiCallStateConnected);
    press(4);
    press(14);
    press(4);
    press(4);
    changeCall(1, 5, sfiCallStateIdle);
    offer(130, 1001);
    press(4);

    EXPECT_THAT(service_.takeNoted(), ElementsAre("dss 4 context 0 ", "dss 4 context 1 ", "dss 4 context 2 ",
                                                  "dss 4 context 1 ", "dss 4 context 3 4713#2"));
}

TEST_F(KeyApplicationTest, StationKey_OfARingingParty_PicksUp)
{
    buildKeys();
    WatchedParty party;
    party.status = PartyStatus::kRinging;
    {
        std::lock_guard const lock(calls_);
        dynamic_cast<DssLine&>(*lines_->getDSSLineForFPK(4)).setParty(party);
    }
    EXPECT_EQ(lamp("4"), "flashing");
    press(4);

    EXPECT_THAT(service_.takeNoted(), ElementsAre("dss 4 context 4 "));
}

TEST_F(KeyApplicationTest, BusyLampKey_PassesOnTheTransferMode)
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

TEST_F(KeyApplicationTest, MuteKey_IsRefusedOnlyIfTheServiceRefuses)
{
    buildKeys();
    test::LogFile const log;
    press(9);
    EXPECT_EQ(log.written(), "");
    ON_CALL(service_, setMicrophoneMute(testing::_)).WillByDefault(testing::Return(sfiFailure));
    press(9);

    EXPECT_THAT(log.written(), HasSubstr("the service refused to switch the microphone on\n"));
}

TEST_F(KeyApplicationTest, HookUp_AnswersTheRingingCall)
{
    buildKeys();
    offer(2, 1001);
    hook(true);

    EXPECT_THAT(service_.takeNoted(), ElementsAre("answer 4712 1001"));
}

TEST_F(KeyApplicationTest, HookUp_WithoutACall_SeizesThePrimaryLine_AndDownReleasesIt)
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

TEST_F(KeyApplicationTest, HookDown_ClearsTheActiveCall_NotTheOneOnHold)
{
    buildKeys();
    changeCall(1, 5, sfiCallStateHeld);
    changeCall(2, 6, sfiCallStateConnected);
    hook(true);
    hook(false);

    EXPECT_THAT(service_.takeNoted(), ElementsAre("clear 4712 6 1"));
}

TEST_F(KeyApplicationTest, HookDown_ClearsACallByItsState)
{
    buildKeys();
    struct Case
    {
        sfiCallState state;
        bool clears;
    };
    for (Case const& each :
         {Case{sfiCallStateDialling, true}, Case{sfiCallStateProceeding, true}, Case{sfiCallStateRemoteRinging, true},
          Case{sfiCallStateConnected, true}, Case{sfiCallStateRemotelyHeld, true}, Case{sfiCallStateConference, true},
          Case{sfiCallStateHeld, false}, Case{sfiCallStateHeldByBoth, false}, Case{sfiCallStateRinging, false}}) {
        changeCall(1, 5, each.state);
        hook(true);
        service_.takeNoted();
        hook(false);
        auto const noted = service_.takeNoted();
        EXPECT_EQ(noted.size() == 1 && noted.front() == "clear 4711 5 1", each.clears) << each.state;
        changeCall(1, 5, sfiCallStateIdle);
    }
}

TEST_F(KeyApplicationTest, HookUp_DuringACallOrWithASelectedLine_DoesNothing)
{
    buildKeys();
    changeCall(1, 5, sfiCallStateConnected);
    hook(true);
    EXPECT_THAT(service_.takeNoted(), IsEmpty());
    changeCall(1, 5, sfiCallStateIdle);
    hook(false);

    press(2);
    EXPECT_THAT(service_.takeNoted(), ElementsAre("line key 2"));
    hook(true);
    EXPECT_THAT(service_.takeNoted(), IsEmpty());
    EXPECT_EQ(stateOf("4712"), eLineStateSelected);
    EXPECT_EQ(stateOf("4711"), eLineStateIdle);
}

TEST_F(KeyApplicationTest, HeadsetKey_ReleasesASelectedLine_AndSeizesOneWithout)
{
    buildKeys();
    EXPECT_TRUE(physical_->plug("headset", true));
    physical_->flush();

    press(10);
    EXPECT_EQ(stateOf("4711"), eLineStateSelected);
    press(10);
    EXPECT_EQ(stateOf("4711"), eLineStateIdle);

    EXPECT_TRUE(physical_->plug("handset", true));
    EXPECT_TRUE(physical_->plug("headset", false));
    physical_->flush();
    EXPECT_EQ(lamp("headset"), "off");
    press(10);
    EXPECT_EQ(stateOf("4711"), eLineStateIdle);
}

TEST_F(KeyApplicationTest, ReleaseKey_ClearsTheDiallingCall)
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

    EXPECT_TRUE(physical_->plug("headset", true));
    physical_->flush();
    EXPECT_EQ(lamp("headset"), "steady");
    offer(1, 1001);
    press(10);
    changeCall(1, 1001, sfiCallStateConnected);
    press(10);

    EXPECT_THAT(service_.takeNoted(), ElementsAre("answer 4711 1001", "clear 4711 1001 1"));
}

TEST_F(KeyApplicationTest, KeysWithoutAService_AreRefused)
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

TEST_F(KeyApplicationTest, CallThatAlertsOnTheKeysetOnly_IsAnsweredByItsLineKeyOnly)
{
    buildKeys();
    offer(1, 1001);
    {
        std::lock_guard const lock(calls_);
        lines_->find("4711")->alertOnKeysetOnly(1001);
    }
    EXPECT_EQ(lamp("1"), "flashing");

    hook(true);
    press(4);
    press(1);

    EXPECT_THAT(service_.takeNoted(), ElementsAre("line 4712", "dss 4 context 0 ", "line key 1"));
    EXPECT_THAT(calls_.takeAsked(), ElementsAre("answer 1001"));
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

TEST_F(KeyApplicationTest, LockedPhone_AcceptsOnlyKeysThatDialAPermittedNumber)
{
    buildKeys();
    PermitsStation analysis;
    lines_->setDigitAnalysisService(&analysis);
    EXPECT_TRUE(settings_->set("phone-locked", "true"));
    for (int const key : {1, 4, 5, 9, 11, 12}) {
        press(key);
    }
    EXPECT_THAT(service_.takeNoted(), ElementsAre("dss 4 context 0 "));
    EXPECT_EQ(stateOf("4711"), eLineStateIdle);

    EXPECT_TRUE(settings_->set("phone-locked", "false"));
    press(1);
    EXPECT_THAT(service_.takeNoted(), ElementsAre("line key 1"));
}

TEST_F(KeyApplicationTest, LockedPhone_StillAnswersByTheHookSwitch)
{
    buildKeys();
    EXPECT_TRUE(settings_->set("phone-locked", "true"));
    offer(1, 1001);
    hook(true);

    EXPECT_THAT(service_.takeNoted(), ElementsAre("answer 4711 1001"));
}

}  // namespace
}  // namespace telephone
