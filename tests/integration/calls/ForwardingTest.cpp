// Incoming calls that the telephone forwards or refuses by its rules.
#include "ExchangePhones.h"
#include "telephone/base/Touched.h"

namespace telephone::test {

class Forwarding : public ThreePhones
{
protected:
    void setRule(sfiForwardingType type, std::string const& destination)
    {
        std::lock_guard const guard(eventLoop());
        bob_.rules[type] = {true, destination};
    }

    void aliceCallsBob() { ASSERT_TRUE(alice_.engine().outgoing().make(1, 0, 1, "4722")); }

    // diverted: the diverting party and the reason.
    void expectAtCarol(std::string const& diverted)
    {
        carol_.expect({"incoming 4733 1001 4711 - 1 " + diverted, "state 4733 1001 ringing normal 4711"});
    }
};

TEST_F(Forwarding, Unconditional_SendsTheCallerOnAtOnce)
{
    setRule(sfiForwardUnconditional, "4733");

    aliceCallsBob();

    bob_.expect({"forwarded 4722 1001 4711 4733 1"});
    expectAtCarol("4722 1");
}

TEST_F(Forwarding, UnconditionalInternal_ComesBeforeTheGeneralRule)
{
    setRule(sfiForwardUnconditional, "102");
    setRule(sfiForwardUnconditionalInternal, "4733");

    aliceCallsBob();

    bob_.expect({"forwarded 4722 1001 4711 4733 1"});
    expectAtCarol("4722 1");
}

TEST_F(Forwarding, UnconditionalExternal_LeavesInternalCallersAlone)
{
    setRule(sfiForwardUnconditionalExternal, "4733");

    aliceCallsBob();

    bob_.expect({"incoming 4722 1001 4711 - 1 - 0", "state 4722 1001 ringing normal 4711"});
}

TEST_F(Forwarding, UnconditionalExternal_MovesCallersOfAnotherDomain)
{
    EnginePhone::Options options;
    options.lines = {"9000"};
    EnginePhone outside(options);
    setRule(sfiForwardUnconditionalExternal, "4733");

    ASSERT_TRUE(outside.engine().outgoing().make(1, 0, 1, "sip:4722@" + exchange_.hostPort()));

    bob_.expect({"forwarded 4722 1001 9000 4733 1"});
    carol_.expect({"incoming 4733 1001 9000 - 2 4722 1", "state 4733 1001 ringing normal 9000"});
}

TEST_F(Forwarding, OnBusy_MovesTheSecondCall)
{
    setRule(sfiForwardBusy, "4733");
    ASSERT_TRUE(bob_.engine().outgoing().make(1, 0, 1, "100"));
    ASSERT_TRUE(bob_.events().waitFor("state 4722 1 connected normal 100"));

    aliceCallsBob();

    bob_.expect({"forwarded 4722 1001 4711 4733 2"});
    expectAtCarol("4722 2");
}

TEST_F(Forwarding, OnNoReply_MovesTheCallWhenTheTimerExpires)
{
    EnginePhone::Options options = phoneAt(exchange_, {"4744"});
    options.engine.ringTime = std::chrono::milliseconds(50);
    EnginePhone dave(options);
    dave.expect({"registration 4744 0 yes 0"});
    dave.rings = 2;
    {
        std::lock_guard const guard(eventLoop());
        dave.rules[sfiForwardNoReply] = {true, "4733"};
    }

    ASSERT_TRUE(alice_.engine().outgoing().make(1, 0, 1, "4744"));

    dave.expect({"incoming 4744 1001 4711 - 1 - 0", "state 4744 1001 ringing normal 4711"});
    keepTouched();
    EXPECT_EQ(dave.events().next(std::chrono::milliseconds(99)), "nothing came");
    EXPECT_EQ(dave.events().next(std::chrono::milliseconds(2)), "state 4744 1001 idle forwarded 4711");
    dave.expect({"forwarded 4744 1001 4711 4733 3"});
    EXPECT_TRUE(touchedNames(Touched::kTimer).contains("nobody answers a forwarded line"));
    expectAtCarol("4744 3");
}

TEST_F(Forwarding, AnsweredInTime_StaysHere)
{
    EnginePhone::Options options = phoneAt(exchange_, {"4744"});
    options.engine.ringTime = std::chrono::milliseconds(200);
    EnginePhone dave(options);
    dave.expect({"registration 4744 0 yes 0"});
    dave.rings = 1;
    {
        std::lock_guard const guard(eventLoop());
        dave.rules[sfiForwardNoReply] = {true, "4733"};
    }
    ASSERT_TRUE(alice_.engine().outgoing().make(1, 0, 1, "4744"));
    ASSERT_TRUE(dave.events().waitFor("state 4744 1001 ringing normal 4711"));

    ASSERT_TRUE(dave.engine().answer(1001));

    dave.expect({"state 4744 1001 connected normal 4711"});
    EXPECT_EQ(dave.events().next(std::chrono::milliseconds(400)), "nothing came");
}

TEST_F(Forwarding, ByTheServer_IsNotDoneHere)
{
    setRule(sfiForwardUnconditional, "4733");
    bob_.forwardsAtServer = true;

    aliceCallsBob();

    bob_.expect({"incoming 4722 1001 4711 - 1 - 0", "state 4722 1001 ringing normal 4711"});
}

TEST_F(Forwarding, ToNowhere_IsNotDone)
{
    setRule(sfiForwardUnconditional, "");

    aliceCallsBob();

    bob_.expect({"incoming 4722 1001 4711 - 1 - 0", "state 4722 1001 ringing normal 4711"});
}

TEST_F(Forwarding, ToItself_IsNotDone)
{
    setRule(sfiForwardUnconditional, "4722");

    aliceCallsBob();

    bob_.expect({"incoming 4722 1001 4711 - 1 - 0", "state 4722 1001 ringing normal 4711"});
}

TEST_F(Forwarding, DoNotDisturb_RefusesAndTellsTheMissedCall)
{
    bob_.doNotDisturbOn = true;

    aliceCallsBob();

    bob_.expect({"missed 4722 1001 4711 busy - 0"});
    alice_.expect({"state 4711 1 dialling normal 4722"});
    EXPECT_TRUE(alice_.events().waitFor("state 4711 1 busy busy 4722"));
}

TEST_F(Forwarding, DoNotDisturbAsUnavailable_AnswersThat)
{
    EnginePhone::Options options = phoneAt(exchange_, {"4744"});
    options.engine.doNotDisturbStatus = 480;
    EnginePhone dave(options);
    dave.expect({"registration 4744 0 yes 0"});
    dave.doNotDisturbOn = true;

    ASSERT_TRUE(alice_.engine().outgoing().make(1, 0, 1, "4744"));

    dave.expect({"missed 4744 1001 4711 unavailable - 0"});
    EXPECT_TRUE(alice_.events().waitFor("state 4711 1 failed unavailable 4744"));
}

TEST_F(Forwarding, OutOfService_RefusesCallsBothWays)
{
    EnginePhone::Options options = phoneAt(exchange_, {"4744"});
    options.engine.permissions.set(sip::RequestKind::kCall, sip::Sender::kAnybody);
    EnginePhone dave(options);
    dave.expect({"registration 4744 0 yes 0"});
    dave.engine().setServiceState(sfiServiceOutOfService);

    EXPECT_FALSE(dave.engine().outgoing().make(1, 0, 1, "100"));
    ASSERT_TRUE(alice_.engine().outgoing().make(1, 0, 1, dave.uri()));

    EXPECT_TRUE(alice_.events().waitFor("state 4711 1 failed unavailable 4744"));
    dave.expect({"registration 4744 0 no 4"});
}

}  // namespace telephone::test
