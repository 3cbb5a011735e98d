// Two engines that call each other directly: the life of a call and its events in order.
#include "tests/helpers/EnginePhone.h"

namespace telephone::test {

namespace {

class TwoPhones : public ::testing::Test
{
protected:
    EnginePhone alice_{EnginePhone::optionsOf("4711")};
    EnginePhone bob_{EnginePhone::optionsOf("4722")};

    void connect(int callID)
    {
        ASSERT_TRUE(alice_.engine().outgoing().make(1, 0, callID, bob_.uri()));
        bob_.expect({"incoming 4722 1001 4711 - 2 - 0", "state 4722 1001 ringing normal 4711"});
        std::string const id = std::to_string(callID);
        alice_.expect({"state 4711 " + id + " dialling normal 4722", "state 4711 " + id + " proceeding normal 4722",
                       "state 4711 " + id + " remote ringing normal 4722"});
        ASSERT_TRUE(bob_.engine().answer(1001));
        alice_.expect({"state 4711 " + id + " connected normal 4722"});
        bob_.expect({"state 4722 1001 connected normal 4711"});
    }
};

}  // namespace

TEST_F(TwoPhones, MakeAndAnswer_BothBecomeConnected)
{
    connect(1);
}

TEST_F(TwoPhones, ClearByTheCaller_EndsBothSides)
{
    connect(1);

    ASSERT_TRUE(alice_.engine().clear(1));

    alice_.expect({"state 4711 1 idle normal 4722"});
    bob_.expect({"state 4722 1001 idle normal 4711"});
    EXPECT_TRUE(alice_.engine().calls().empty());
    EXPECT_TRUE(bob_.engine().calls().empty());
}

TEST_F(TwoPhones, ClearByTheCalled_EndsBothSides)
{
    connect(1);

    ASSERT_TRUE(bob_.engine().clear(1001));

    alice_.expect({"state 4711 1 idle normal 4722"});
    bob_.expect({"state 4722 1001 idle normal 4711"});
}

TEST_F(TwoPhones, ClearBeforeTheAnswer_IsMissedByTheCalled)
{
    ASSERT_TRUE(alice_.engine().outgoing().make(1, 0, 7, bob_.uri()));
    ASSERT_TRUE(alice_.events().waitFor("state 4711 7 remote ringing normal 4722"));

    ASSERT_TRUE(alice_.engine().clear(7));

    alice_.expect({"state 4711 7 idle cancelled 4722"});
    bob_.expect({"incoming 4722 1001 4711 - 2 - 0", "state 4722 1001 ringing normal 4711",
                 "missed 4722 1001 4711 no answer - 0", "state 4722 1001 idle cancelled 4711"});
}

TEST_F(TwoPhones, HoldAndRetrieve_AreSeenByBoth)
{
    connect(1);

    ASSERT_TRUE(alice_.engine().established().hold(1));
    alice_.expect({"held 4711 1"});
    bob_.expect({"state 4722 1001 remotely held normal 4711"});
    ASSERT_TRUE(alice_.engine().established().retrieve(1));

    alice_.expect({"retrieved 4711 1 4722"});
    bob_.expect({"state 4722 1001 connected normal 4711"});
}

TEST_F(TwoPhones, HoldFromBothSides_EndsHeldByBoth)
{
    connect(1);
    ASSERT_TRUE(alice_.engine().established().hold(1));
    alice_.expect({"held 4711 1"});
    bob_.expect({"state 4722 1001 remotely held normal 4711"});

    ASSERT_TRUE(bob_.engine().established().hold(1001));

    bob_.expect({"held 4722 1001"});
    alice_.expect({"state 4711 1 held by both normal 4722"});
    EXPECT_EQ(bob_.engine().call(1001)->state, sfiCallStateHeldByBoth);
    ASSERT_TRUE(alice_.engine().established().retrieve(1));
    alice_.expect({"retrieved 4711 1 4722", "state 4711 1 remotely held normal 4722"});
}

TEST_F(TwoPhones, HoldOfBothAtOnce_SettlesInSpiteOfGlare)
{
    connect(1);

    {
        std::lock_guard const guard(eventLoop());
        ASSERT_TRUE(alice_.engine().established().hold(1));
        ASSERT_TRUE(bob_.engine().established().hold(1001));
    }

    EXPECT_TRUE(eventually([this] {
        return alice_.engine().call(1)->state == sfiCallStateHeldByBoth &&
               bob_.engine().call(1001)->state == sfiCallStateHeldByBoth;
    }));
}

// The ids from 10000 to 10500 are those of calls over Bluetooth.
TEST_F(TwoPhones, FreeCallIds_LeaveOutThoseInUseAndThoseOfBluetooth)
{
    auto const next = [this] { return alice_.engine().freeCallID(); };
    EXPECT_EQ(next(), 1001);
    ASSERT_TRUE(alice_.engine().outgoing().make(1, 0, 1002, bob_.uri()));
    EXPECT_EQ(next(), 1003);
    int last = 1003;
    while (last < 9999) {
        last = next();
    }
    EXPECT_EQ(last, 9999);
    EXPECT_EQ(next(), 10501);
    for (last = 10501; last < 999999;) {
        last = next();
    }
    EXPECT_EQ(last, 999999);
    EXPECT_EQ(next(), 1001);
    EXPECT_EQ(next(), 1003);
}

}  // namespace telephone::test
