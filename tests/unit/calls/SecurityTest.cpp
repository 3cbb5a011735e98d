// Encrypted audio as the applications see it.
#include "tests/helpers/EnginePhone.h"

namespace telephone::test {

namespace {

EnginePhone::Options with(sip::Encryption encryption, std::string const& line)
{
    EnginePhone::Options options = EnginePhone::optionsOf(line);
    options.engine.agent.encryption = encryption;
    options.engine.agent.keysWithoutTls = true;
    return options;
}

// Two telephones in a call from 4711 to 4722.
struct Conversation
{
    Conversation(sip::Encryption caller, sip::Encryption called)
        : alice(with(caller, "4711"))
        , bob(with(called, "4722"))
    {
        EXPECT_TRUE(alice.engine().outgoing().make(1, 0, 1, bob.uri()));
        EXPECT_TRUE(bob.events().waitFor("state 4722 1001 ringing normal 4711"));
        EXPECT_TRUE(bob.engine().answer(1001));
        EXPECT_TRUE(alice.events().waitFor("state 4711 1 connected normal 4722"));
        EXPECT_TRUE(bob.events().waitFor("state 4722 1001 connected normal 4711"));
    }
    bool isSecure() const
    {
        bool const secure = alice.engine().call(1)->secure;
        EXPECT_EQ(bob.engine().call(1001)->secure, secure);
        return secure;
    }

    mutable EnginePhone alice;
    mutable EnginePhone bob;
};

}  // namespace

TEST(Security, EncryptedCall_IsToldAtBothEnds)
{
    Conversation call(sip::Encryption::kOptional, sip::Encryption::kOptional);

    call.alice.expect({"security 4711 1 2"});
    call.bob.expect({"security 4722 1001 2"});
    EXPECT_TRUE(call.isSecure());
}

TEST(Security, PlainCall_IsNotToldAndNotSecure)
{
    Conversation call(sip::Encryption::kOptional, sip::Encryption::kNone);

    call.alice.expect({});
    EXPECT_FALSE(call.isSecure());
}

TEST(Security, ChangeToPlainAndBack_IsToldAtBothEnds)
{
    Conversation call(sip::Encryption::kOptional, sip::Encryption::kOptional);
    call.alice.expect({"security 4711 1 2"});
    call.bob.expect({"security 4722 1001 2"});

    ASSERT_TRUE(call.alice.engine().established().changeSecurity(1, false));
    call.alice.expect({"security 4711 1 1"});
    call.bob.expect({"security 4722 1001 1"});
    EXPECT_FALSE(call.isSecure());

    ASSERT_TRUE(call.bob.engine().established().changeSecurity(1001, true));
    call.alice.expect({"security 4711 1 2"});
    call.bob.expect({"security 4722 1001 2"});
    EXPECT_TRUE(call.isSecure());
}

TEST(Security, FarEndThatDoesNotEncrypt_LeavesTheCallPlain)
{
    Conversation call(sip::Encryption::kOptional, sip::Encryption::kNone);

    ASSERT_TRUE(call.alice.engine().established().changeSecurity(1, true));

    call.alice.expect({"security 4711 1 1"});
    EXPECT_FALSE(call.isSecure());
}

TEST(Security, ChangeThatTheConfigurationForbids_IsRefusedWithTheReason)
{
    Conversation plain(sip::Encryption::kNone, sip::Encryption::kNone);
    EXPECT_EQ((telephone::Refusal{RefusalKind::kNotSupported,
                                  "call 1 cannot be secured: this telephone has no encrypted audio"}),
              plain.alice.engine().established().changeSecurity(1, true).error());

    Conversation encrypted(sip::Encryption::kRequired, sip::Encryption::kRequired);
    EXPECT_EQ(
        (telephone::Refusal{RefusalKind::kNotSupported, "call 1 cannot be made plain: encrypted audio is required"}),
        encrypted.alice.engine().established().changeSecurity(1, false).error());
}

}  // namespace telephone::test
