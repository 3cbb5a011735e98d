// What a call makes of far ends that refuse, repeat, or say something new about themselves: the far end is written
// message by message.
#include "ExchangePhones.h"
#include "telephone/calls/EstablishedCalls.h"
#include "tests/integration/sip/ScriptedEnd.h"

namespace telephone::test {

namespace {

// A telephone without a call server, and call 1 to a far end that has accepted it.
class FarEndAnswers : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(phone_.engine().outgoing().make(1, 0, 1, far_.uri()));
        invite_ = far_.receive("INVITE");
        far_.accept(invite_);
        ASSERT_NE(far_.receive("ACK"), "");
        ASSERT_TRUE(phone_.events().waitFor("state 4711 1 connected normal far"));
        phone_.events().rest();
    }

    sfiCallState state() { return phone_.engine().call(1).value_or(CallSnapshot()).state; }

    EnginePhone phone_{EnginePhone::optionsOf("4711")};
    ScriptedEnd far_{eventLoop()};
    std::string invite_;
};

}  // namespace

TEST_F(FarEndAnswers, HoldThatIsRefused_FailsAndTheCallGoesOn)
{
    struct Case
    {
        char const* status;
        char const* failure;
    };
    for (Case const& each :
         {Case{"403 Forbidden", "failed 4711 1 hold 1"}, Case{"480 Unavailable", "failed 4711 1 hold 2"},
          Case{"604 Nowhere", "failed 4711 1 hold 4"}, Case{"486 Busy Here", "failed 4711 1 hold 5"}}) {
        ASSERT_TRUE(phone_.engine().hold(1)) << each.status;
        far_.answer(far_.receive("INVITE"), each.status);
        EXPECT_TRUE(phone_.events().waitFor(each.failure)) << each.status;
        EXPECT_EQ(state(), sfiCallStateConnected) << each.status;
        phone_.events().rest();
    }
}

// RFC 3261 section 12.2.1.2.
TEST_F(FarEndAnswers, HoldOfACallThatTheFarEndDoesNotKnow_EndsIt)
{
    ASSERT_TRUE(phone_.engine().hold(1));
    far_.answer(far_.receive("INVITE"), "481 Call/Transaction Does Not Exist");

    EXPECT_TRUE(eventually([this] { return state() == sfiCallStateIdle; }));
    EXPECT_NE(far_.receive("BYE"), "");
}

TEST_F(FarEndAnswers, RetrieveOfACallThatIsNotHeld_IsRefused)
{
    EXPECT_EQ(phone_.engine().retrieve(1).error().reason,
              "call 1 cannot be retrieved: this telephone does not hold it");
}

TEST_F(FarEndAnswers, FeatureThatTheServiceReportsAsFailed_IsToldForTheCallOfTheLine)
{
    phone_.engine().featureFailed(1, sfiFeatureConference, sfiFeatureFailureRefused);
    phone_.engine().featureFailed(0, sfiFeatureDeflect, sfiFeatureFailureTimeout);

    phone_.expect({"failed 4711 1 conference 1", "failed 4711 1 deflect 2"});
}

TEST_F(FarEndAnswers, FeatureThatFailsWithoutACall_IsToldForTheLine)
{
    ASSERT_TRUE(phone_.engine().clear(1));
    far_.answer(far_.receive("BYE"), "200 OK");
    ASSERT_TRUE(phone_.events().waitFor("state 4711 1 idle normal far"));
    phone_.events().rest();

    phone_.engine().featureFailed(1, sfiFeatureConference, sfiFeatureFailureRefused);

    phone_.expect({"failed 4711 0 conference 1"});
}

TEST_F(FarEndAnswers, AnswerTwice_IsOneAnswer)
{
    far_.ask("INVITE", "4711", phone_.engine().userAgent().hostPort(), "", ScriptedEnd::description());
    ASSERT_TRUE(eventually([this] { return phone_.alerts(); }));

    EXPECT_TRUE(phone_.engine().answer(1001));
    EXPECT_TRUE(phone_.engine().answer(1001));
    EXPECT_EQ(phone_.engine().deflect(1001, "100").error().reason,
              "call 1001 cannot be deflected: it is being answered");
}

TEST_F(FarEndAnswers, CallThatDoesNotRing_CannotBeAnsweredOrDeflected)
{
    EXPECT_EQ(phone_.engine().answer(1).error().reason, "call 1 cannot be answered: it is not ringing here");
    EXPECT_EQ(phone_.engine().deflect(1, "100").error().reason, "call 1 cannot be deflected: it is not ringing here");
}

TEST_F(FarEndAnswers, Alternating_NeedsAHeldAndAnActiveCall)
{
    EXPECT_EQ(phone_.engine().established().alternate(1).error().reason, "calls cannot be alternated: no call is held");

    ASSERT_TRUE(phone_.engine().hold(1));
    far_.answer(far_.receive("INVITE"), "200 OK", "", ScriptedEnd::description());
    ASSERT_TRUE(phone_.events().waitFor("held 4711 1"));
    EXPECT_EQ(phone_.engine().established().alternate(1).error().reason,
              "calls cannot be alternated: no call is active beside the held one");
}

TEST_F(FarEndAnswers, PrecedenceOfALaterInvite_IsTold)
{
    far_.request("INVITE", invite_, "Resource-Priority: dsn.flash\r\n", ScriptedEnd::description());

    EXPECT_TRUE(phone_.events().waitFor("preemption 4711 1 4 0 -"));
}

}  // namespace telephone::test
