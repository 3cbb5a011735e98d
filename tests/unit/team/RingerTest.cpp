#include "telephone/team/Ringer.h"

#include <gmock/gmock.h>

#include "TeamFixture.h"
#include "telephone/base/Touched.h"

namespace telephone {
namespace {

class RingerTest : public TeamFixture
{};

TEST_F(RingerTest, CallOnTheKeysetOnly_AlertsByItsLampAlone)
{
    buildTeam();
    offer(1, 1001);
    EXPECT_TRUE(bell_.isRinging());
    keyset_->callStateChanged("4711", sfiCallStateConnected, 1001, 0);
    keyset_->callStateChanged("4711", static_cast<sfiCallState>(17), 1002, 0);
    EXPECT_TRUE(bell_.isRinging());

    keyset_->callStateChanged("4711", static_cast<sfiCallState>(17), 1001, 0);
    EXPECT_FALSE(bell_.isRinging());
    EXPECT_EQ(lamp("1"), "flashing");
    EXPECT_EQ(keyset_->getIncomingCallPriority("4711"), 1);

    changeCall(1, 1001, sfiCallStateConnected);
    keyset_->callStateChanged("4711", static_cast<sfiCallState>(17), 1001, 0);
    changeCall(1, 1001, sfiCallStateIdle);
    offer(1, 1001);
    EXPECT_TRUE(bell_.isRinging());
}

TEST_F(RingerTest, CallOnTheKeysetOnly_LeavesTheOtherCallsOfItsLineAudible)
{
    buildTeam();
    offer(129, 1001);
    keyset_->callStateChanged("4713#1", static_cast<sfiCallState>(17), 1001, 0);
    EXPECT_FALSE(bell_.isRinging());

    offer(130, 1002);
    EXPECT_TRUE(bell_.isRinging());
    changeCall(130, 1002, sfiCallStateIdle);
    EXPECT_FALSE(bell_.isRinging());
}

TEST_F(RingerTest, Telephone_RingsWhileACallIsAudible)
{
    configuration_.lines[1].ring = 0;
    buildTeam();
    offer(2, 1002);
    EXPECT_FALSE(bell_.isRinging());
    offer(1, 1001);
    EXPECT_TRUE(bell_.isRinging());
    keyset_->callIgnored("4711");
    EXPECT_FALSE(bell_.isRinging());
    offer(130, 1003);
    EXPECT_TRUE(bell_.isRinging());
    changeCall(130, 1003, sfiCallStateConnected);
    EXPECT_FALSE(bell_.isRinging());
}

TEST_F(RingerTest, IsolatedLine_IsTheOnlyAudibleOne)
{
    buildTeam();
    keyset_->callIsolation("4712", true);
    offer(1, 1001);
    EXPECT_FALSE(bell_.isRinging());
    keyset_->callIsolation("4711", false);
    EXPECT_FALSE(bell_.isRinging());
    keyset_->callIsolation("4712", false);
    EXPECT_TRUE(bell_.isRinging());
}

TEST_F(RingerTest, LineOfAnAppearance_IsIsolatedAsAWhole)
{
    buildTeam();
    keyset_->callIsolation("4713#1", true);
    offer(130, 1001);
    EXPECT_TRUE(bell_.isRinging());
    offer(1, 1002);
    changeCall(130, 1001, sfiCallStateIdle);
    EXPECT_FALSE(bell_.isRinging());

    keyset_->callIsolation("4713#2", false);
    EXPECT_TRUE(bell_.isRinging());
    keyset_->callIsolation("4799", true);
    EXPECT_TRUE(bell_.isRinging());
}

TEST_F(RingerTest, End_StopsTheRingingForGood)
{
    buildTeam();
    offer(1, 1001);
    ASSERT_TRUE(bell_.isRinging());

    ringer_->stop();

    EXPECT_FALSE(bell_.isRinging());
    offer(2, 1002);
    EXPECT_FALSE(bell_.isRinging());
    ringer_->stop();
    EXPECT_FALSE(bell_.isRinging());
}

TEST_F(RingerTest, RingDelay_Applies_UnlessImmediateRingIsOn)
{
    configuration_.lines[0].ringDelay = 1;
    buildTeam();
    offer(1, 1001);
    EXPECT_FALSE(bell_.isRinging());
    keepTouched();
    EXPECT_TRUE(bell_.waitForRinging());
    EXPECT_TRUE(touchedNames(Touched::kTimer).contains("line with a ring delay rings"));
    changeCall(1, 1001, sfiCallStateIdle);
    EXPECT_FALSE(bell_.isRinging());

    std::string outcome;
    keyset_->setImmediateRing(true, outcome);
    EXPECT_EQ(outcome, "immediate ring is on");
    EXPECT_TRUE(keyset_->getImmediateRing());
    offer(1, 1002);
    EXPECT_TRUE(bell_.isRinging());

    keyset_->setImmediateRing(false, outcome);
    EXPECT_EQ(outcome, "immediate ring is off");
    EXPECT_FALSE(keyset_->getImmediateRing());
    EXPECT_FALSE(bell_.isRinging());
}

}  // namespace
}  // namespace telephone
