// Offers and answers of far ends, as they stand in the packet.
#include "telephone/sip/SdpNegotiation.h"

#include <cerrno>

#include <gtest/gtest.h>

namespace telephone::sip {
namespace {

class Negotiation : public testing::Test
{
protected:
    static sa localAddress()
    {
        sa address{};
        sa_set_str(&address, "127.0.0.1", 0);
        return address;
    }
    static int decode(SdpNegotiation& negotiation, std::string const& media, bool offer)
    {
        Ref<mbuf> body;
        EXPECT_TRUE(fill(body, "v=0\r\no=- 1 1 IN IP4 127.0.0.1\r\ns=-\r\nc=IN IP4 127.0.0.1\r\nt=0 0\r\n" + media));
        return negotiation.decode(body.get(), offer);
    }
    int decodeOffer(std::string const& media) { return decode(negotiation_, media, true); }
    int decodeAnswer(std::string const& media)
    {
        encoded(true);
        return decode(negotiation_, media, false);
    }
    std::string encoded(bool offer)
    {
        Ref<mbuf> description;
        EXPECT_TRUE(negotiation_.encode(description, offer));
        return remainingText(description.get());
    }
    // The media of our description.
    std::string media(bool offer)
    {
        std::string const text = encoded(offer);
        return text.substr(text.find("m="));
    }

    SdpNegotiation negotiation_{localAddress(), 5000, {"PCMU", "PCMA"}, true};
};

TEST_F(Negotiation, OfferOfAStaticTypeWithoutRtpmap_IsAccepted)
{
    ASSERT_EQ(decodeOffer("m=audio 4000 RTP/AVP 8\r\n"), 0);

    EXPECT_EQ(negotiation_.agreement().codec, "PCMA");
    EXPECT_EQ(negotiation_.agreement().payloadType, 8);
    EXPECT_EQ(negotiation_.agreement().eventPayloadType, -1);
}

TEST_F(Negotiation, AnswerOfAStaticTypeWithoutRtpmap_IsAccepted)
{
    ASSERT_EQ(decodeAnswer("m=audio 4000 RTP/AVP 0\r\n"), 0);

    auto const agreement = negotiation_.agreement();
    EXPECT_EQ(agreement.codec, "PCMU");
    EXPECT_EQ(sa_port(&agreement.remote), 4000);
}

TEST_F(Negotiation, StaticTypesWithAndWithoutRtpmap_KeepTheirOrder)
{
    ASSERT_EQ(decodeOffer("m=audio 4000 RTP/AVP 8 0 101\na=rtpmap:101 telephone-event/8000\na=rtpmap:0 PCMU/8000\n"),
              0);

    EXPECT_EQ(negotiation_.agreement().codec, "PCMA");
    EXPECT_EQ(negotiation_.agreement().eventPayloadType, 101);
}

TEST_F(Negotiation, MalformedLinesOfFormatsThatNobodyUses_DoNotCostTheCall)
{
    EXPECT_EQ(decodeOffer("m=audio 4000 RTP/AVP 0 96 97 98\r\na=rtpmap:96 \r\na=rtpmap:97 opus\r\na=rtpmap:\r\n"
                          "a=rtpmap:98 speex/fast\r\na=fmtp:96\r\na=fmtp: x\r\n"),
              0);

    EXPECT_EQ(negotiation_.agreement().codec, "PCMU");
}

TEST_F(Negotiation, MalformedRtpmapOfAStaticType_CountsAsMissing)
{
    EXPECT_EQ(decodeOffer("m=audio 4000 RTP/AVP 0\r\na=rtpmap:0 PCMU\r\n"), 0);
}

TEST_F(Negotiation, StaticNumberOfAnotherFormat_IsNotG711)
{
    EXPECT_EQ(decodeOffer("m=audio 4000 RTP/AVP 0\r\na=rtpmap:0 GSM/8000\r\n"), EPROTO);
}

TEST_F(Negotiation, StaticTypeOfAnotherMedium_IsNotNamed)
{
    EXPECT_EQ(decodeOffer("m=audio 4000 RTP/AVP 9\r\nm=video 4002 RTP/AVP 0\r\n"), EPROTO);
}

TEST_F(Negotiation, DynamicTypeOfG711_IsAnsweredSentAndReceivedWithItsNumber)
{
    ASSERT_EQ(decodeOffer("m=audio 4000 RTP/AVP 97\r\na=rtpmap:97 PCMU/8000\r\n"), 0);

    auto const agreement = negotiation_.agreement();
    EXPECT_EQ(agreement.codec, "PCMU");
    EXPECT_EQ(agreement.payloadType, 97);
    EXPECT_EQ(agreement.received[97], Payload::kULaw);
    EXPECT_EQ(agreement.received[0], Payload::kUnknown);
    EXPECT_TRUE(media(false).starts_with("m=audio 5000 RTP/AVP 97\r\n")) << media(false);
}

TEST_F(Negotiation, AnswerWithADynamicTypeForOurStaticOne_IsReceivedWithBoth)
{
    ASSERT_EQ(decodeAnswer("m=audio 4000 RTP/AVP 97 98\r\na=rtpmap:97 PCMA/8000\r\n"
                           "a=rtpmap:98 telephone-event/8000\r\n"),
              0);

    auto const agreement = negotiation_.agreement();
    EXPECT_EQ(agreement.payloadType, 97);
    EXPECT_EQ(agreement.received[97], Payload::kALaw);
    EXPECT_EQ(agreement.received[8], Payload::kALaw);
    EXPECT_EQ(agreement.received[0], Payload::kUnknown);
    EXPECT_EQ(agreement.received[98], Payload::kEvents);
    EXPECT_EQ(agreement.received[101], Payload::kEvents);
}

TEST_F(Negotiation, OfferWithTheSecureProfile_IsAnsweredWithItAndTheTag)
{
    negotiation_.useEncryption(Encryption::kOptional);

    ASSERT_EQ(decodeOffer("m=audio 4000 RTP/SAVP 0\r\n"
                          "a=crypto:5 AES_CM_128_HMAC_SHA1_80 inline:WVNfX19zZW1jdGwgKCkgewkyMjA7fQp9CnVubGVz\r\n"),
              0);

    std::string const answer = media(false);
    EXPECT_TRUE(answer.starts_with("m=audio 5000 RTP/SAVP 0\r\n")) << answer;
    EXPECT_NE(answer.find("\r\na=crypto:5 AES_CM_128_HMAC_SHA1_80 inline:"), std::string::npos) << answer;
    EXPECT_EQ(answer.find("a=crypto:", answer.find("a=crypto:") + 1), std::string::npos) << answer;
    EXPECT_TRUE(negotiation_.agreement().keys);
}

TEST_F(Negotiation, PlainOfferAfterAnEncryptedOne_IsAnsweredWithoutKeys)
{
    negotiation_.useEncryption(Encryption::kOptional);
    ASSERT_EQ(decodeOffer("m=audio 4000 RTP/SAVP 0\r\n"
                          "a=crypto:5 AES_CM_128_HMAC_SHA1_80 inline:WVNfX19zZW1jdGwgKCkgewkyMjA7fQp9CnVubGVz\r\n"),
              0);
    media(false);

    ASSERT_EQ(decodeOffer("m=audio 4000 RTP/AVP 0\r\n"), 0);

    std::string const answer = media(false);
    EXPECT_TRUE(answer.starts_with("m=audio 5000 RTP/AVP 0\r\n")) << answer;
    EXPECT_EQ(answer.find("a=crypto:"), std::string::npos) << answer;
    EXPECT_FALSE(negotiation_.agreement().keys);
}

TEST_F(Negotiation, OffersOfEncryption_HaveTheProfileThatTheyNeed)
{
    EXPECT_TRUE(media(true).starts_with("m=audio 5000 RTP/AVP 0 8 101\r\n"));
    EXPECT_EQ(media(true).find("a=crypto:"), std::string::npos);

    negotiation_.useEncryption(Encryption::kOptional);
    EXPECT_TRUE(media(true).starts_with("m=audio 5000 RTP/AVP 0 8 101\r\n"));
    EXPECT_NE(media(true).find("\r\na=crypto:1 AEAD_AES_256_GCM inline:"), std::string::npos);

    negotiation_.useEncryption(Encryption::kRequired);
    EXPECT_TRUE(media(true).starts_with("m=audio 5000 RTP/SAVP 0 8 101\r\n"));
    EXPECT_NE(media(true).find("\r\na=crypto:4 AES_CM_128_HMAC_SHA1_32 inline:"), std::string::npos);
}

TEST_F(Negotiation, OfferOfBothProfiles_IsAnsweredInOneOfThem)
{
    negotiation_.useEncryption(Encryption::kOptional);

    ASSERT_EQ(decodeOffer("m=audio 4000 RTP/SAVP 0\r\n"
                          "a=crypto:1 AES_CM_128_HMAC_SHA1_80 inline:WVNfX19zZW1jdGwgKCkgewkyMjA7fQp9CnVubGVz\r\n"
                          "m=audio 4002 RTP/AVP 0\r\n"),
              0);

    std::string const answer = media(false);
    EXPECT_TRUE(answer.starts_with("m=audio 5000 RTP/SAVP 0\r\n")) << answer;
    EXPECT_NE(answer.find("\r\nm=audio 0 RTP/AVP 0\r\n"), std::string::npos) << answer;
}

TEST_F(Negotiation, OfferOfBothProfilesWithoutEncryptionHere_IsAnsweredInThePlainOne)
{
    ASSERT_EQ(decodeOffer("m=audio 4000 RTP/SAVP 0\r\n"
                          "a=crypto:1 AES_CM_128_HMAC_SHA1_80 inline:WVNfX19zZW1jdGwgKCkgewkyMjA7fQp9CnVubGVz\r\n"
                          "m=audio 4002 RTP/AVP 0\r\n"),
              0);

    EXPECT_TRUE(media(false).starts_with("m=audio 0 RTP/SAVP 0\r\nm=audio 5000 RTP/AVP 0\r\n")) << media(false);
}

}  // namespace
}  // namespace telephone::sip
