#include "telephone/sip/WireText.h"

#include <gtest/gtest.h>

#include "telephone/sip/Uri.h"

namespace telephone::sip {

TEST(WireText, FoldedValue_IsOneLine)
{
    EXPECT_EQ("a b c", unfolded("a \r\n\t b\r\n c"));
    EXPECT_EQ("a ", unfolded("a\r\n"));
    EXPECT_EQ("", unfolded(""));
}

TEST(WireText, PlainText_HasNoElementsAndNoControlCharacters)
{
    EXPECT_EQ("a(/Name)(CallID)7(/CallID) b c", plainText("a</Name><CallID>7</CallID>\r\n b\x1b"
                                                          "c"));
    EXPECT_EQ("J\xc3\xb6rg & Co", plainText("J\xc3\xb6rg & Co"));
}

TEST(WireText, DisplayName_IsPlainInEveryNameAddr)
{
    EXPECT_EQ("Ann Smith (CallID)7(/CallID)",
              NameAddr::parse("\"Ann\r\n Smith <CallID>7</CallID>\" <sip:1@h>")->displayName);
    EXPECT_EQ("Ann Smith", NameAddr::parse("Ann\r\n Smith <sip:1@h>")->displayName);
}

TEST(WireText, MessageForTheLog_HasNoResponsesAndNoKeys)
{
    EXPECT_EQ(
        "Authorization: Digest username=\"1\", response=\"***\", nc=00000001\r\n"
        "Proxy-Authorization: Digest Response=\"***\"\r\n\r\n"
        "a=crypto:1 AES_CM_128_HMAC_SHA1_80 inline:***|2^20\r\n",
        withoutSecrets("Authorization: Digest username=\"1\", response=\"8ca523f5\", nc=00000001\r\n"
                       "Proxy-Authorization: Digest Response=\"753927fa\"\r\n\r\n"
                       "a=crypto:1 AES_CM_128_HMAC_SHA1_80 inline:WVNfX19zZW1jdGwgKCkgewkyMjA7fQp9CnVubGVz|2^20\r\n"));
    EXPECT_EQ("response=\"***", withoutSecrets("response=\"cut off"));
}

}  // namespace telephone::sip
