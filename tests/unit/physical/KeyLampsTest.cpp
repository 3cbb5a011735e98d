#include "telephone/physical/KeyLamps.h"

#include <gmock/gmock.h>

#include "KeysFixture.h"

namespace telephone {
namespace {

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

TEST_F(KeyLampsTest, HoldLamp_SetByAnApplication_StaysUntilAHoldBeginsOrEnds)
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
        EXPECT_TRUE(lines_->find("4711")->silence());
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
