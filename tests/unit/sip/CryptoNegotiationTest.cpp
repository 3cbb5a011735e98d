// Offers and answers of keys, of two ends and of far ends that do other things.
#include "telephone/sip/CryptoNegotiation.h"

#include <gtest/gtest.h>

namespace telephone::sip {
namespace {

constexpr char const* kFarKey = "WVNfX19zZW1jdGwgKCkgewkyMjA7fQp9CnVubGVz";

CryptoDescription secure(std::vector<std::string> attributes)
{
    return {std::move(attributes), true};
}

std::string farAttribute(int tag, std::string const& suite = "AES_CM_128_HMAC_SHA1_80")
{
    return std::to_string(tag) + " " + suite + " inline:" + kFarKey;
}

std::string reasonOf(Outcome<> const& outcome)
{
    return outcome ? "" : outcome.error().reason;
}

// Whether both ends have agreed on the same two keys.
bool fit(CryptoNegotiation const& left, CryptoNegotiation const& right)
{
    return left.agreed() && right.agreed() && left.agreed()->own == right.agreed()->far &&
           left.agreed()->far == right.agreed()->own && left.agreed()->own != left.agreed()->far;
}

// One offer and answer between the two.
void negotiate(CryptoNegotiation& caller, CryptoNegotiation& called)
{
    ASSERT_TRUE(called.readOffer(caller.offer()));
    ASSERT_TRUE(caller.readAnswer(called.answer()));
}

TEST(CryptoNegotiationTest, TwoEndsThatMay_AgreeOnTheStrongestSuiteInAnOrdinaryProfile)
{
    CryptoNegotiation caller(Encryption::kOptional);
    CryptoNegotiation called(Encryption::kOptional);

    EXPECT_FALSE(caller.offer().isSecureProfile);
    negotiate(caller, called);

    EXPECT_TRUE(fit(caller, called));
    EXPECT_EQ(caller.agreed()->own.suite, CryptoSuite::kAeadAes256Gcm);
    EXPECT_FALSE(called.answer().isSecureProfile);
}

TEST(CryptoNegotiationTest, EndThatMust_OffersTheSecureProfileAndIsAnsweredWithIt)
{
    CryptoNegotiation caller(Encryption::kRequired);
    CryptoNegotiation called(Encryption::kOptional);

    EXPECT_TRUE(caller.offer().isSecureProfile);
    negotiate(caller, called);

    EXPECT_TRUE(fit(caller, called));
    EXPECT_TRUE(called.answer().isSecureProfile);
    EXPECT_TRUE(called.offer().isSecureProfile) << "of a later offer";
}

TEST(CryptoNegotiationTest, EndWithoutEncryption_AnswersWithoutKeys)
{
    CryptoNegotiation caller(Encryption::kOptional);
    CryptoNegotiation called(Encryption::kNone);

    negotiate(caller, called);

    EXPECT_FALSE(caller.agreed());
    EXPECT_FALSE(called.agreed());
    EXPECT_TRUE(called.answer().attributes.empty());
}

TEST(CryptoNegotiationTest, EndThatMust_RefusesAnOfferAndAnAnswerWithoutKeys)
{
    CryptoNegotiation end(Encryption::kRequired);

    EXPECT_EQ(reasonOf(end.readOffer({})), "encrypted audio is required");
    end.offer();
    EXPECT_EQ(reasonOf(end.readAnswer({})), "encrypted audio is required");
}

TEST(CryptoNegotiationTest, SecureProfileWithNothingUsable_IsRefused)
{
    CryptoNegotiation without(Encryption::kNone);
    CryptoNegotiation optional(Encryption::kOptional);

    EXPECT_EQ(reasonOf(without.readOffer(secure({farAttribute(1)}))), "there is no encrypted audio here");
    EXPECT_EQ(reasonOf(optional.readOffer(secure({farAttribute(1, "F8_128_HMAC_SHA1_80")}))),
              "there is no encryption in common");
}

TEST(CryptoNegotiationTest, Answer_HasTheTagOfTheFirstUsableAttribute)
{
    CryptoNegotiation called(Encryption::kOptional);

    ASSERT_TRUE(called.readOffer(secure({farAttribute(3, "F8_128_HMAC_SHA1_80"), farAttribute(42), farAttribute(43)})));

    ASSERT_EQ(called.answer().attributes.size(), 1U);
    EXPECT_TRUE(called.answer().attributes.front().starts_with("42 AES_CM_128_HMAC_SHA1_80 inline:"));
}

TEST(CryptoNegotiationTest, AnswerWithAnotherTagOrSuiteThanOffered_IsRefused)
{
    CryptoNegotiation caller(Encryption::kOptional);
    caller.offer();

    EXPECT_EQ(reasonOf(caller.readAnswer({{farAttribute(1)}})), "the answer has another encryption than was offered");
    EXPECT_EQ(reasonOf(caller.readAnswer({{farAttribute(9)}})), "the answer has another encryption than was offered");
    EXPECT_FALSE(caller.agreed());
    EXPECT_TRUE(caller.readAnswer({{farAttribute(3)}}));
}

TEST(CryptoNegotiationTest, RefusedOffer_LeavesTheAgreement)
{
    CryptoNegotiation caller(Encryption::kRequired);
    CryptoNegotiation called(Encryption::kRequired);
    negotiate(caller, called);

    EXPECT_FALSE(called.readOffer({}));

    EXPECT_TRUE(fit(caller, called));
}

TEST(CryptoNegotiationTest, FurtherOffer_HasTheSameKeysUntilTheyAreChanged)
{
    CryptoNegotiation caller(Encryption::kOptional);
    CryptoNegotiation called(Encryption::kOptional);
    negotiate(caller, called);
    auto const first = *caller.agreed();

    negotiate(caller, called);
    EXPECT_EQ(caller.agreed()->own, first.own);
    EXPECT_EQ(caller.agreed()->far, first.far);
    ASSERT_TRUE(caller.change(true));
    EXPECT_EQ(caller.agreed()->own, first.own) << "until the answer";
    negotiate(caller, called);

    EXPECT_NE(caller.agreed()->own, first.own);
    EXPECT_TRUE(fit(caller, called));
}

TEST(CryptoNegotiationTest, ChangeToPlainAndBack_IsAgreedByBothEnds)
{
    CryptoNegotiation caller(Encryption::kOptional);
    CryptoNegotiation called(Encryption::kOptional);
    negotiate(caller, called);

    ASSERT_TRUE(caller.change(false));
    negotiate(caller, called);
    EXPECT_FALSE(caller.agreed());
    EXPECT_FALSE(called.agreed());

    ASSERT_TRUE(caller.change(true));
    negotiate(caller, called);
    EXPECT_TRUE(fit(caller, called));
}

TEST(CryptoNegotiationTest, ChangeThatTheConfigurationForbids_IsRefused)
{
    CryptoNegotiation without(Encryption::kNone);
    CryptoNegotiation required(Encryption::kRequired);

    EXPECT_EQ(reasonOf(without.change(true)), "this telephone has no encrypted audio");
    EXPECT_EQ(reasonOf(required.change(false)), "encrypted audio is required");
}

TEST(CryptoNegotiationTest, RefusedChange_IsTakenBack)
{
    CryptoNegotiation caller(Encryption::kOptional);
    CryptoNegotiation called(Encryption::kOptional);
    negotiate(caller, called);
    auto const before = caller;

    ASSERT_TRUE(caller.change(false));
    caller.restoreOffer(before);

    EXPECT_EQ(caller.offer().attributes, CryptoNegotiation(before).offer().attributes);
}

}  // namespace
}  // namespace telephone::sip
