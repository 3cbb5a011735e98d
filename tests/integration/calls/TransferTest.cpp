// Transfer between three telephones.
#include "ExchangePhones.h"

namespace telephone::test {

using TransferOfThree = ThreePhones;

TEST_F(TransferOfThree, BlindTransfer_ConnectsTheOtherTwo)
{
    connectAliceAndBob();

    ASSERT_TRUE(alice_.engine().blindTransfer(1, "4733"));

    alice_.expect({"state 4711 1 transferring normal 4722"});
    carol_.expect({"incoming 4733 1001 4722 - 1 - 0", "state 4733 1001 ringing normal 4722"});
    ASSERT_TRUE(carol_.engine().answer(1001));
    carol_.expect({"state 4733 1001 connected normal 4722"});
    bob_.expect({"party 4722 1001 4733 0 0"});
    alice_.expect({"success 4711 1 blind transfer", "state 4711 1 idle transferred 4722"});
    EXPECT_EQ(bob_.engine().call(1001)->state, sfiCallStateConnected);
    EXPECT_TRUE(alice_.engine().calls().empty());
}

TEST_F(TransferOfThree, BlindTransferToABusyNumber_LeavesTheCallAsItWas)
{
    connectAliceAndBob();

    ASSERT_TRUE(alice_.engine().blindTransfer(1, "101"));

    alice_.expect({"state 4711 1 transferring normal 4722", "failed 4711 1 blind transfer 5",
                   "state 4711 1 connected normal 4722"});
    EXPECT_EQ(bob_.engine().call(1001)->state, sfiCallStateConnected);
}

TEST_F(TransferOfThree, AttendedTransfer_ConnectsTheOtherTwo)
{
    connectAliceAndBob();
    consultCarol();

    ASSERT_TRUE(alice_.engine().joined().attendedTransfer(1));

    alice_.expect({"state 4711 1 transferring normal 4722", "state 4711 2 transferring normal 4733"});
    bob_.expect({"party 4722 1001 4733 0 0", "state 4722 1001 connected normal 4733"});
    carol_.expect({"party 4733 1001 4722 0 0"});
    EXPECT_TRUE(alice_.events().waitFor("success 4711 1 attended transfer"));
    EXPECT_TRUE(eventually([this] { return alice_.engine().calls().empty(); }));
    ASSERT_TRUE(bob_.engine().clear(1001));
    carol_.expect({"state 4733 1001 idle normal 4722"});
}

TEST_F(TransferOfThree, BlindTransferOfACallFromTheExchange_KeepsTheCallersName)
{
    ASSERT_TRUE(exchange_.callNumber("555", "4711", "Ann"));
    alice_.expect({"incoming 4711 1001 555 Ann 1 - 0", "state 4711 1001 ringing normal 555"});
    ASSERT_TRUE(alice_.engine().answer(1001));
    ASSERT_TRUE(alice_.events().waitFor("state 4711 1001 connected normal 555"));

    ASSERT_TRUE(alice_.engine().blindTransfer(1001, "4733"));

    carol_.expect({"incoming 4733 1001 555 Ann 1 - 0", "state 4733 1001 ringing normal 555"});
}

TEST_F(TransferOfThree, AttendedTransferToANumberThatOnlyCalled_ConnectsTheOtherTwo)
{
    connectAliceAndBob();
    ASSERT_TRUE(exchange_.callNumber("555", "4711"));
    ASSERT_TRUE(alice_.events().waitFor("state 4711 1001 ringing normal 555"));
    ASSERT_TRUE(alice_.engine().answer(1001));
    ASSERT_TRUE(alice_.events().waitFor("state 4711 1001 connected normal 555"));

    ASSERT_TRUE(alice_.engine().joined().attendedTransfer(1));

    EXPECT_TRUE(bob_.events().waitFor("state 4722 1001 connected normal 555"));
    EXPECT_TRUE(alice_.events().waitFor("success 4711 1 attended transfer"));
    EXPECT_TRUE(eventually([this] { return alice_.engine().calls().empty() && exchange_.callCount() == 1; }));
}

TEST_F(TransferOfThree, AttendedTransferEndsEachCallOfTheTransferrerOnce)
{
    connectAliceAndBob();
    consultCarol();

    ASSERT_TRUE(alice_.engine().joined().attendedTransfer(1));
    ASSERT_TRUE(eventually([this] { return alice_.engine().calls().empty(); }));

    std::vector<std::string> const events = alice_.events().rest();
    EXPECT_EQ(std::count(events.begin(), events.end(), "state 4711 1 idle transferred 4722"), 1);
    EXPECT_EQ(std::count(events.begin(), events.end(), "state 4711 2 idle transferred 4733"), 1);
}

TEST_F(TransferOfThree, AttendedTransferToARingingParty_CallsItAnew)
{
    connectAliceAndBob();
    ASSERT_TRUE(alice_.engine().outgoing().make(1, 0, 2, "4733", CallPurpose::kConsultation));
    ASSERT_TRUE(alice_.events().waitFor("state 4711 2 remote ringing normal 4733"));

    ASSERT_TRUE(alice_.engine().joined().attendedTransfer(1));

    EXPECT_TRUE(carol_.events().waitFor("state 4733 1002 ringing normal 4722"));
    ASSERT_TRUE(carol_.engine().answer(1002));
    EXPECT_TRUE(carol_.events().waitFor("state 4733 1002 connected normal 4722"));
    EXPECT_TRUE(eventually([this] { return alice_.engine().calls().empty(); }));
}

TEST_F(TransferOfThree, TransferWithoutASecondCall_IsRefused)
{
    connectAliceAndBob();

    EXPECT_FALSE(alice_.engine().joined().attendedTransfer(1));

    EXPECT_TRUE(alice_.events().rest().empty());
}

TEST_F(TransferOfThree, TransferredPartyThatHangsUpDuringTheTransfer_EndsIt)
{
    connectAliceAndBob();
    ASSERT_TRUE(alice_.engine().blindTransfer(1, "102"));
    alice_.expect({"state 4711 1 transferring normal 4722"});

    ASSERT_TRUE(bob_.engine().clear(1001));

    EXPECT_TRUE(eventually([this] { return alice_.engine().calls().empty(); }));
}

TEST_F(TransferOfThree, Deflect_SendsTheCallerOn)
{
    ASSERT_TRUE(alice_.engine().outgoing().make(1, 0, 1, "4722"));
    ASSERT_TRUE(bob_.events().waitFor("state 4722 1001 ringing normal 4711"));
    ASSERT_TRUE(alice_.events().waitFor("state 4711 1 remote ringing normal 4722"));

    ASSERT_TRUE(bob_.engine().deflect(1001, "4733"));

    bob_.expect({"state 4722 1001 idle forwarded 4711", "forwarded 4722 1001 4711 4733 4"});
    carol_.expect({"incoming 4733 1001 4711 - 1 4722 4", "state 4733 1001 ringing normal 4711"});
    alice_.expect({"party 4711 1 4733 0 0"});
    ASSERT_TRUE(carol_.engine().answer(1001));
    alice_.expect({"state 4711 1 connected normal 4733"});
}

}  // namespace telephone::test
