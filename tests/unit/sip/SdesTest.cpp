#include "telephone/sip/Sdes.h"

#include <gtest/gtest.h>

namespace telephone::sip {
namespace {

using namespace std::string_literals;

// Of RFC 4568.
constexpr char const* kEncoded = "WVNfX19zZW1jdGwgKCkgewkyMjA7fQp9CnVubGVz";
auto const kDecoded = "YS___semctl () {\t220;}\n}\nunles"s;

std::string attribute(std::string const& rest = {})
{
    return "1 AES_CM_128_HMAC_SHA1_80 inline:"s + kEncoded + rest;
}

TEST(Sdes, Attribute_IsReadWithItsTagSuiteAndKey)
{
    auto const read = CryptoAttribute::parse(attribute());

    ASSERT_TRUE(read);
    EXPECT_EQ(read->tag, 1);
    EXPECT_EQ(read->key.suite, CryptoSuite::kAesCm128HmacSha1_80);
    EXPECT_EQ(read->key.key, kDecoded);
}

TEST(Sdes, LifetimeAndParametersThatMayBeIgnored_AreIgnored)
{
    EXPECT_TRUE(CryptoAttribute::parse(attribute("|2^20")));
    EXPECT_TRUE(CryptoAttribute::parse(attribute(" -FEC_KEY -X=1")));
}

TEST(Sdes, WhatWeDoNotSupport_IsNotAccepted)
{
    EXPECT_FALSE(CryptoAttribute::parse(attribute("|2^20|1:4"))) << "key identifier";
    EXPECT_FALSE(CryptoAttribute::parse(attribute("|1:4"))) << "key identifier";
    EXPECT_FALSE(CryptoAttribute::parse(attribute(";inline:"s + kEncoded))) << "two keys";
    EXPECT_FALSE(CryptoAttribute::parse(attribute(" UNENCRYPTED_SRTP"))) << "session parameter";
    EXPECT_FALSE(CryptoAttribute::parse("1 F8_128_HMAC_SHA1_80 inline:"s + kEncoded)) << "suite";
}

TEST(Sdes, MalformedAttribute_IsNotAccepted)
{
    for (char const* value : {"", "1", "x AES_CM_128_HMAC_SHA1_80 inline:WVNfX19zZW1jdGwgKCkgewkyMjA7fQp9CnVubGVz",
                              "1 AES_CM_128_HMAC_SHA1_80", "1 AES_CM_128_HMAC_SHA1_80 inline:",
                              "1 AES_CM_128_HMAC_SHA1_80 inline:WVNf", "1 AES_CM_128_HMAC_SHA1_80 uri:x",
                              "-1 AES_CM_128_HMAC_SHA1_80 inline:WVNfX19zZW1jdGwgKCkgewkyMjA7fQp9CnVubGVz",
                              "1 AEAD_AES_128_GCM inline:WVNfX19zZW1jdGwgKCkgewkyMjA7fQp9CnVubGVz"}) {
        EXPECT_FALSE(CryptoAttribute::parse(value)) << value;
    }
}

TEST(Sdes, Key_IsWrittenWithItsTag)
{
    CryptoAttribute const made{7, {CryptoSuite::kAesCm128HmacSha1_32, kDecoded}};

    EXPECT_EQ(made.format(), "7 AES_CM_128_HMAC_SHA1_32 inline:WVNfX19zZW1jdGwgKCkgewkyMjA7fQp9CnVubGVz");
}

TEST(Sdes, NewKeys_HaveTheSizeOfTheirSuiteAndDiffer)
{
    EXPECT_EQ(makeCryptoKey(CryptoSuite::kAeadAes256Gcm).key.size(), 44U);
    EXPECT_EQ(makeCryptoKey(CryptoSuite::kAeadAes128Gcm).key.size(), 28U);
    EXPECT_EQ(makeCryptoKey(CryptoSuite::kAesCm128HmacSha1_80).key.size(), 30U);
    EXPECT_NE(makeCryptoKey(CryptoSuite::kAeadAes256Gcm), makeCryptoKey(CryptoSuite::kAeadAes256Gcm));
}

TEST(Sdes, KeysOfAMessage_AreMasked)
{
    EXPECT_EQ(maskedKeys("INVITE sip:1@a\r\n\r\na=crypto:1 S inline:abc|2^20\r\na=crypto:2 S inline:de+/=\r\na=x\r\n"),
              "INVITE sip:1@a\r\n\r\na=crypto:1 S inline:***|2^20\r\na=crypto:2 S inline:***\r\na=x\r\n");
    EXPECT_EQ(maskedKeys("a=crypto:1 S inline:abc"), "a=crypto:1 S inline:***");
    EXPECT_EQ(maskedKeys("BYE"), "BYE");
}

}  // namespace
}  // namespace telephone::sip
