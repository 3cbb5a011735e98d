#include "telephone/sip/Uri.h"

#include <gtest/gtest.h>

namespace telephone::sip {

TEST(UriTest, WithEverything_IsReadAndWrittenAgain)
{
    auto const uri = Uri::parse("sip:al%69ce:pw@[2001:db8::1]:5061;transport=tcp;lr?Replaces=a%40b%3Bto-tag%3Dc&X=1");

    ASSERT_TRUE(uri);
    EXPECT_EQ("alice", uri->user);
    EXPECT_EQ("pw", uri->password);
    EXPECT_EQ("2001:db8::1", uri->host);
    EXPECT_EQ(5061, uri->port);
    EXPECT_EQ("tcp", uri->parameter("Transport"));
    EXPECT_EQ("", uri->parameter("lr"));
    EXPECT_EQ("a@b;to-tag=c", uri->header("replaces"));
    EXPECT_EQ("sip:alice:pw@[2001:db8::1]:5061;transport=tcp;lr?Replaces=a%40b%3Bto-tag%3Dc&X=1", uri->format());
    EXPECT_EQ("sip:alice@[2001:db8::1]:5061", uri->formatAddressOfRecord());
}

TEST(UriTest, Telephone_KeepsItsNumberAsUser)
{
    auto const uri = Uri::parse("tel:+49-89-1234;phone-context=example.com");

    ASSERT_TRUE(uri);
    EXPECT_EQ("+49-89-1234", uri->user);
    EXPECT_EQ("tel:+49-89-1234", uri->formatAddressOfRecord());
}

class MalformedUriTest : public ::testing::TestWithParam<char const*>
{};

TEST_P(MalformedUriTest, IsRefused)
{
    EXPECT_FALSE(Uri::parse(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Texts, MalformedUriTest,
                         ::testing::Values("", "4711", "sip:", "sip:a@", "sip:a@host:0", "sip:a@host:99999",
                                           "sip:a@ho st", "sip:a@host\r\nX: y", "http://host", "sip:a@[::1",
                                           "tel:", "sip:a@host:port", "sip:a@<host>"));

TEST(UriTest, Target_IsMadeOfWhatWasDialled)
{
    EXPECT_EQ("sip:100@127.0.0.1:5060", targetUri("100", "127.0.0.1:5060"));
    EXPECT_EQ("sip:*97102@pbx", targetUri(" *97102 ", "pbx"));
    EXPECT_EQ("sip:%2312@pbx", targetUri("#12", "pbx"));
    EXPECT_EQ("sip:al@example.com", targetUri("al@example.com", "pbx"));
    EXPECT_EQ("SIP:al@example.com", targetUri("SIP:al@example.com", "pbx"));
    EXPECT_EQ("sip:bad%20user%3C@pbx", targetUri("bad user<", "pbx"));
}

TEST(NameAddrTest, QuotedName_IsUnescapedAndEscapedAgain)
{
    auto const address = NameAddr::parse("\"A \\\"B\\\", C\" <sip:1@h;x=y>;tag=7;q");

    ASSERT_TRUE(address);
    EXPECT_EQ("A \"B\", C", address->displayName);
    EXPECT_EQ("y", address->uri.parameter("x"));
    EXPECT_EQ("7", address->parameter("TAG"));
    EXPECT_EQ("\"A \\\"B\\\", C\" <sip:1@h;x=y>;tag=7;q", address->format());
}

TEST(NameAddrTest, WithoutBrackets_TheParametersAreTheHeaders)
{
    auto const address = NameAddr::parse("sip:1@h;tag=7");

    ASSERT_TRUE(address);
    EXPECT_TRUE(address->uri.parameters.empty());
    EXPECT_EQ("7", address->parameter("tag"));
}

TEST(NameAddrTest, OfAList_IsTheFirst)
{
    EXPECT_EQ("1", NameAddr::parse("Al <sip:1@h>, <sip:2@h>")->uri.user);
    EXPECT_EQ((std::vector<std::string>{"\"a,b\" <sip:1@h,x>", "sip:2@h"}), splitList("\"a,b\" <sip:1@h,x>, sip:2@h"));
    EXPECT_FALSE(NameAddr::parse("\"open <sip:1@h>"));
    EXPECT_FALSE(NameAddr::parse("<sip:1@h"));
}

}  // namespace telephone::sip
