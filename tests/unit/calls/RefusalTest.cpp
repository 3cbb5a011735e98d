// Operations that are refused: each returns its refusal, and no event follows.
#include "tests/helpers/EnginePhone.h"

namespace telephone::test {

namespace {

class Refusal : public ::testing::Test
{
protected:
    EnginePhone alice_{EnginePhone::optionsOf("4711")};
    EnginePhone bob_{EnginePhone::optionsOf("4722")};

    CallEngine& engine() { return alice_.engine(); }
    void TearDown() override { EXPECT_EQ(alice_.events().rest(), std::vector<std::string>{}); }

    void ring()
    {
        ASSERT_TRUE(engine().outgoing().make(1, 0, 1, bob_.uri()));
        ASSERT_TRUE(alice_.events().waitFor("state 4711 1 remote ringing normal 4722"));
    }
};

}  // namespace

TEST_F(Refusal, UnknownLine)
{
    EXPECT_EQ(engine().outgoing().make(0, 0, 1, bob_.uri()).error().reason,
              "the request names no line of this telephone");
    EXPECT_EQ(engine().outgoing().make(9, 0, 1, bob_.uri()).error().reason, "there is no line 9");
    EXPECT_EQ(engine().established().alternate(0).error().reason, "the request names no line of this telephone");
}

TEST_F(Refusal, CallIdInUse)
{
    ring();

    EXPECT_FALSE(engine().outgoing().make(1, 0, 1, bob_.uri()));
    EXPECT_FALSE(engine().pickups().group(1, 0, 1));
}

TEST_F(Refusal, CallIdBelowOne)
{
    EXPECT_FALSE(engine().outgoing().make(1, 0, 0, bob_.uri()));
    EXPECT_FALSE(engine().outgoing().make(1, 0, -1, bob_.uri()));
}

TEST_F(Refusal, MalformedDestination)
{
    EXPECT_FALSE(engine().outgoing().make(1, 0, 1, ""));
    EXPECT_FALSE(engine().outgoing().make(1, 0, 1, "sip:"));
    EXPECT_FALSE(engine().outgoing().make(1, 0, 1, std::string(1000000, '1')));
}

TEST_F(Refusal, CallThatDoesNotExist)
{
    EXPECT_FALSE(engine().answer(7));
    EXPECT_FALSE(engine().incoming().ring(7));
    EXPECT_FALSE(engine().incoming().reject(7, sfiRefuseCallBusy));
    EXPECT_FALSE(engine().deflect(7, "100"));
    EXPECT_FALSE(engine().clear(7));
    EXPECT_FALSE(engine().established().hold(7));
    EXPECT_FALSE(engine().established().retrieve(7));
    EXPECT_FALSE(engine().blindTransfer(7, "100"));
    EXPECT_FALSE(engine().joined().attendedTransfer(7));
    EXPECT_FALSE(engine().joined().conference(7));
    EXPECT_FALSE(engine().established().sendDigits(7, "1"));
    EXPECT_FALSE(engine().established().changeSecurity(7, false));
}

TEST_F(Refusal, CallBackThatIsNotSet)
{
    auto const cancel = [this](int callID, std::string const& target) {
        return engine().callBacks().cancel(callID, target, sfiCancelCallBackAll, true).error().reason;
    };
    EXPECT_EQ(cancel(7, "100"), "no such call-back to \"100\" is set");
    EXPECT_EQ(cancel(7, ""), "no such call-back is set for call 7");
    EXPECT_EQ(cancel(-1, ""), "no such call-back is set");
}

TEST_F(Refusal, CallThatIsNotConnected)
{
    ring();

    EXPECT_FALSE(engine().established().hold(1));
    EXPECT_FALSE(engine().established().retrieve(1));
    EXPECT_FALSE(engine().answer(1));
    EXPECT_FALSE(engine().incoming().reject(1, sfiRefuseCallBusy));
    EXPECT_FALSE(engine().blindTransfer(1, "100"));
    EXPECT_FALSE(engine().established().sendDigits(1, "1"));
    EXPECT_FALSE(engine().joined().conference(1));
    EXPECT_FALSE(engine().established().changeSecurity(1, false));
}

TEST_F(Refusal, InvalidDigits)
{
    ring();

    EXPECT_FALSE(engine().established().sendDigits(1, ""));
    EXPECT_FALSE(engine().established().sendDigits(1, "12x"));
}

TEST_F(Refusal, UnknownReason)
{
    ring();
    ASSERT_TRUE(bob_.events().waitFor("state 4722 1001 ringing normal 4711"));

    EXPECT_FALSE(bob_.engine().incoming().reject(1001, static_cast<sfiRefuseCall>(-1)));

    EXPECT_EQ(bob_.engine().call(1001)->state, sfiCallStateRinging);
}

TEST_F(Refusal, SecureAudio)
{
    ring();
    ASSERT_TRUE(bob_.events().waitFor("state 4722 1001 ringing normal 4711"));
    ASSERT_TRUE(bob_.engine().answer(1001));
    ASSERT_TRUE(alice_.events().waitFor("state 4711 1 connected normal 4722"));

    EXPECT_FALSE(engine().established().changeSecurity(1, true));
}

TEST_F(Refusal, GroupPickupWithoutANumberForIt)
{
    EXPECT_FALSE(engine().pickups().group(1, 0, 1));
}

TEST(CallLimit, IsKeptBothWays)
{
    EnginePhone::Options options = EnginePhone::optionsOf("4711");
    options.engine.maximumCalls = 1;
    EnginePhone alice(options);
    EnginePhone bob(EnginePhone::optionsOf("4722"));
    ASSERT_TRUE(alice.engine().outgoing().make(1, 0, 1, bob.uri()));
    ASSERT_TRUE(alice.events().waitFor("state 4711 1 remote ringing normal 4722"));

    EXPECT_FALSE(alice.engine().outgoing().make(1, 0, 2, bob.uri()));
    ASSERT_TRUE(bob.engine().outgoing().make(1, 0, 1, alice.uri()));

    EXPECT_TRUE(bob.events().waitFor("state 4722 1 busy busy 4711"));
}

TEST(Inactive, Telephone_TakesAndMakesNoCalls)
{
    EnginePhone alice(EnginePhone::optionsOf("4711"));
    EnginePhone bob(EnginePhone::optionsOf("4722"));
    alice.engine().deactivate();

    EXPECT_FALSE(alice.engine().outgoing().make(1, 0, 1, bob.uri()));
    ASSERT_TRUE(bob.engine().outgoing().make(1, 0, 1, alice.uri()));

    EXPECT_TRUE(bob.events().waitFor("state 4722 1 failed unavailable 4711"));
}

TEST(Deactivate, WithCalls_EndsThem)
{
    EnginePhone alice(EnginePhone::optionsOf("4711"));
    EnginePhone bob(EnginePhone::optionsOf("4722"));
    ASSERT_TRUE(alice.engine().outgoing().make(1, 0, 1, bob.uri()));
    ASSERT_TRUE(bob.events().waitFor("state 4722 1001 ringing normal 4711"));
    ASSERT_TRUE(bob.engine().answer(1001));
    ASSERT_TRUE(alice.events().waitFor("state 4711 1 connected normal 4722"));

    alice.engine().deactivate();

    alice.expect({"state 4711 1 idle normal 4722"});
    EXPECT_TRUE(bob.events().waitFor("state 4722 1001 idle normal 4711"));
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
    EnginePhone alice(EnginePhone::optionsOf("4711"));
    EnginePhone bob(EnginePhone::optionsOf("4722"));
    ASSERT_TRUE(alice.engine().outgoing().make(1, 0, 1, bob.uri()));
    ASSERT_TRUE(bob.events().waitFor("state 4722 1001 ringing normal 4711"));

    ASSERT_TRUE(bob.engine().incoming().reject(1001, GetParam().reason));

    bob.expect({"state 4722 1001 idle refused 4711"});
    EXPECT_TRUE(alice.events().waitFor(GetParam().expected));
}

INSTANTIATE_TEST_SUITE_P(Reasons, RefuseWith,
                         ::testing::Values(RefusalCase{sfiRefuseCallBusy, "state 4711 1 busy busy 4722"},
                                           RefusalCase{sfiRefuseCallDecline, "state 4711 1 failed refused 4722"},
                                           RefusalCase{sfiRefuseCallUnavailable,
                                                       "state 4711 1 failed unavailable 4722"},
                                           RefusalCase{sfiRefuseCallNotFound, "state 4711 1 failed not found 4722"},
                                           RefusalCase{sfiRefuseCallForbidden, "state 4711 1 failed refused 4722"}));

}  // namespace telephone::test
