// Calls that ring at one telephone and are picked up at another.
#include "ExchangePhones.h"

namespace telephone::test {

class Pickup : public ThreePhones
{
protected:
    // alice calls bob, who does not answer.
    void ringBob()
    {
        ASSERT_TRUE(alice_.engine().outgoing().make(1, 0, 1, "4722"));
        ASSERT_TRUE(bob_.events().waitFor("state 4722 1001 ringing normal 4711"));
        ASSERT_TRUE(alice_.events().waitFor("state 4711 1 remote ringing normal 4722"));
    }
};

TEST_F(Pickup, DirectedPickupByTheDialogPackage_TakesTheCall)
{
    ringBob();

    ASSERT_TRUE(carol_.engine().pickups().directed(1, 0, 5, "4722"));

    carol_.expect({"state 4733 5 dialling normal 4722", "pickup 4733 5 4711 -", "state 4733 5 connected normal 4711",
                   "success 4733 5 directed pickup"});
    alice_.expect({"party 4711 1 4733 0 0", "state 4711 1 connected normal 4733"});
    bob_.expect({"missed 4722 1001 4711 no answer - 0", "state 4722 1001 idle cancelled 4711"});
}

TEST_F(Pickup, DirectedPickup_ShowsTheCallerAndTheCalled)
{
    ringBob();

    ASSERT_TRUE(carol_.engine().pickups().directed(1, 0, 5, "4722"));
    ASSERT_TRUE(carol_.events().waitFor("state 4733 5 connected normal 4711"));

    sfiReplacesDisplay const display = carol_.events().lastReplaces();
    EXPECT_EQ(display.called, "sip:4722@" + exchange_.hostPort());
    EXPECT_EQ(display.calling, "sip:4711@" + exchange_.hostPort());
}

TEST_F(Pickup, DirectedPickupWhereNothingRings_Fails)
{
    ASSERT_TRUE(carol_.engine().pickups().directed(1, 0, 5, "4722"));

    carol_.expect(
        {"state 4733 5 dialling normal 4722", "failed 4733 5 directed pickup 4", "state 4733 5 failed not found 4722"});
}

TEST_F(Pickup, DirectedPickupThatIsGivenUp_EndsIdle)
{
    ASSERT_TRUE(carol_.engine().pickups().directed(1, 0, 5, "4722"));

    ASSERT_TRUE(carol_.engine().clear(5));

    carol_.expect({"state 4733 5 dialling normal 4722", "state 4733 5 idle cancelled 4722"});
}

TEST_F(Pickup, PickupNumber_TakesTheCall)
{
    ringBob();

    ASSERT_TRUE(carol_.engine().outgoing().make(1, 0, 5, "*974722"));

    EXPECT_TRUE(carol_.events().waitFor("success 4733 5 directed pickup"));
    EXPECT_TRUE(alice_.events().waitFor("state 4711 1 connected normal 4722"));
    EXPECT_TRUE(bob_.events().waitFor("state 4722 1001 idle cancelled 4711"));
}

TEST_F(Pickup, GroupPickup_TakesTheCall)
{
    ringBob();

    ASSERT_TRUE(carol_.engine().pickups().group(1, 0, 5));

    EXPECT_TRUE(carol_.events().waitFor("success 4733 5 group pickup"));
    EXPECT_TRUE(bob_.events().waitFor("state 4722 1001 idle cancelled 4711"));
}

TEST_F(Pickup, GroupPickupWithNothingToPickUp_Fails)
{
    ASSERT_TRUE(carol_.engine().pickups().group(1, 0, 5));

    std::vector<std::string> skipped;
    EXPECT_TRUE(carol_.events().waitFor("failed 4733 5 group pickup 2", &skipped)) << ::testing::PrintToString(skipped);
}

}  // namespace telephone::test
