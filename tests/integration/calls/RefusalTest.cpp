// Operations that cannot be done: each answers a failure, and no event follows.
#include "TestPhone.h"

namespace telephone::test {

namespace {

class Refusal : public ::testing::Test
{
protected:
    TestPhone alice_{TestPhone::optionsOf("4711")};
    TestPhone bob_{TestPhone::optionsOf("4722")};

    CallEngine& engine() { return alice_.engine(); }
    void TearDown() override { EXPECT_EQ(alice_.events().rest(), std::vector<std::string>{}); }

    void ring()
    {
        ASSERT_EQ(engine().make(1, 0, 1, bob_.uri()), sfiSuccess);
        ASSERT_TRUE(alice_.events().waitFor("state 4711 1 RemoteRinging Normal 4722"));
    }
};

}  // namespace

TEST_F(Refusal, UnknownLine)
{
    EXPECT_EQ(engine().make(0, 0, 1, bob_.uri()), sfiFailure);
    EXPECT_EQ(engine().make(9, 0, 1, bob_.uri()), sfiFailure);
    EXPECT_EQ(engine().alternate(0), sfiFailure);
}

TEST_F(Refusal, CallIdInUse)
{
    ring();

    EXPECT_EQ(engine().make(1, 0, 1, bob_.uri()), sfiFailure);
    EXPECT_EQ(engine().groupPickup(1, 0, 1), sfiFailure);
}

TEST_F(Refusal, CallIdThatIsNone)
{
    EXPECT_EQ(engine().make(1, 0, 0, bob_.uri()), sfiFailure);
    EXPECT_EQ(engine().make(1, 0, -1, bob_.uri()), sfiFailure);
}

TEST_F(Refusal, DestinationThatIsNone)
{
    EXPECT_EQ(engine().make(1, 0, 1, ""), sfiFailure);
    EXPECT_EQ(engine().make(1, 0, 1, "sip:"), sfiFailure);
    EXPECT_EQ(engine().make(1, 0, 1, std::string(1000000, '1')), sfiFailure);
}

TEST_F(Refusal, CallThatDoesNotExist)
{
    EXPECT_EQ(engine().answer(7), sfiFailure);
    EXPECT_EQ(engine().ring(7), sfiFailure);
    EXPECT_EQ(engine().refuse(7, sfiRefuseCallBusy), sfiFailure);
    EXPECT_EQ(engine().deflect(7, "100"), sfiFailure);
    EXPECT_EQ(engine().clear(7), sfiFailure);
    EXPECT_EQ(engine().hold(7), sfiFailure);
    EXPECT_EQ(engine().retrieve(7), sfiFailure);
    EXPECT_EQ(engine().blindTransfer(7, "100"), sfiFailure);
    EXPECT_EQ(engine().attendedTransfer(7), sfiFailure);
    EXPECT_EQ(engine().conference(7), sfiFailure);
    EXPECT_EQ(engine().sendDigits(7, "1"), sfiFailure);
    EXPECT_EQ(engine().changeSecurity(7, false), sfiFailure);
}

TEST_F(Refusal, CallThatIsNotConnected)
{
    ring();

    EXPECT_EQ(engine().hold(1), sfiFailure);
    EXPECT_EQ(engine().retrieve(1), sfiFailure);
    EXPECT_EQ(engine().answer(1), sfiFailure);
    EXPECT_EQ(engine().refuse(1, sfiRefuseCallBusy), sfiFailure);
    EXPECT_EQ(engine().blindTransfer(1, "100"), sfiFailure);
    EXPECT_EQ(engine().sendDigits(1, "1"), sfiFailure);
    EXPECT_EQ(engine().conference(1), sfiFailure);
    EXPECT_EQ(engine().changeSecurity(1, false), sfiFailure);
}

TEST_F(Refusal, DigitsThatAreNone)
{
    ring();

    EXPECT_EQ(engine().sendDigits(1, ""), sfiFailure);
    EXPECT_EQ(engine().sendDigits(1, "12x"), sfiFailure);
}

TEST_F(Refusal, RefusalThatIsNone)
{
    ring();
    ASSERT_TRUE(bob_.events().waitFor("state 4722 1001 Ringing Normal 4711"));

    EXPECT_EQ(bob_.engine().refuse(1001, static_cast<sfiRefuseCall>(-1)), sfiFailure);

    EXPECT_EQ(bob_.engine().call(1001)->state, sfiCallStateRinging);
}

TEST_F(Refusal, SecureAudio)
{
    ring();
    ASSERT_TRUE(bob_.events().waitFor("state 4722 1001 Ringing Normal 4711"));
    ASSERT_EQ(bob_.engine().answer(1001), sfiSuccess);
    ASSERT_TRUE(alice_.events().waitFor("state 4711 1 Connected Normal 4722"));

    EXPECT_EQ(engine().changeSecurity(1, true), sfiFailure);
}

TEST_F(Refusal, GroupPickupWithoutANumberForIt)
{
    EXPECT_EQ(engine().groupPickup(1, 0, 1), sfiFailure);
}

TEST(CallLimit, IsKeptBothWays)
{
    TestPhone::Options options = TestPhone::optionsOf("4711");
    options.engine.maximumCalls = 1;
    TestPhone alice(options);
    TestPhone bob(TestPhone::optionsOf("4722"));
    ASSERT_EQ(alice.engine().make(1, 0, 1, bob.uri()), sfiSuccess);
    ASSERT_TRUE(alice.events().waitFor("state 4711 1 RemoteRinging Normal 4722"));

    EXPECT_EQ(alice.engine().make(1, 0, 2, bob.uri()), sfiFailure);
    ASSERT_EQ(bob.engine().make(1, 0, 1, alice.uri()), sfiSuccess);

    EXPECT_TRUE(bob.events().waitFor("state 4722 1 Busy Busy 4711"));
}

TEST(Inactive, Telephone_TakesAndMakesNoCalls)
{
    TestPhone alice(TestPhone::optionsOf("4711"));
    TestPhone bob(TestPhone::optionsOf("4722"));
    ASSERT_EQ(alice.engine().deactivate(), sfiSuccess);

    EXPECT_EQ(alice.engine().make(1, 0, 1, bob.uri()), sfiFailure);
    ASSERT_EQ(bob.engine().make(1, 0, 1, alice.uri()), sfiSuccess);

    EXPECT_TRUE(bob.events().waitFor("state 4722 1 Failed Unavailable 4711"));
}

TEST(Deactivate, WithCalls_EndsThem)
{
    TestPhone alice(TestPhone::optionsOf("4711"));
    TestPhone bob(TestPhone::optionsOf("4722"));
    ASSERT_EQ(alice.engine().make(1, 0, 1, bob.uri()), sfiSuccess);
    ASSERT_TRUE(bob.events().waitFor("state 4722 1001 Ringing Normal 4711"));
    ASSERT_EQ(bob.engine().answer(1001), sfiSuccess);
    ASSERT_TRUE(alice.events().waitFor("state 4711 1 Connected Normal 4722"));

    ASSERT_EQ(alice.engine().deactivate(), sfiSuccess);

    alice.expect({"state 4711 1 Idle Normal 4722"});
    EXPECT_TRUE(bob.events().waitFor("state 4722 1001 Idle Normal 4711"));
}

struct RefusalCase
{
    sfiRefuseCall reason;
    char const* expected;
};

class RefuseWith : public ::testing::TestWithParam<RefusalCase>
{};

TEST_P(RefuseWith, TellsTheCallerWhy)
{
    TestPhone alice(TestPhone::optionsOf("4711"));
    TestPhone bob(TestPhone::optionsOf("4722"));
    ASSERT_EQ(alice.engine().make(1, 0, 1, bob.uri()), sfiSuccess);
    ASSERT_TRUE(bob.events().waitFor("state 4722 1001 Ringing Normal 4711"));

    ASSERT_EQ(bob.engine().refuse(1001, GetParam().reason), sfiSuccess);

    bob.expect({"state 4722 1001 Idle Refused 4711"});
    EXPECT_TRUE(alice.events().waitFor(GetParam().expected));
}

INSTANTIATE_TEST_SUITE_P(Reasons, RefuseWith,
                         ::testing::Values(RefusalCase{sfiRefuseCallBusy, "state 4711 1 Busy Busy 4722"},
                                           RefusalCase{sfiRefuseCallDecline, "state 4711 1 Failed Refused 4722"},
                                           RefusalCase{sfiRefuseCallUnavailable,
                                                       "state 4711 1 Failed Unavailable 4722"},
                                           RefusalCase{sfiRefuseCallNotFound, "state 4711 1 Failed NotFound 4722"},
                                           RefusalCase{sfiRefuseCallForbidden, "state 4711 1 Failed Refused 4722"}));

}  // namespace telephone::test
