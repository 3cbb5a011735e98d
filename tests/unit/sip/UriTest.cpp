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
                                           "sip:a@ho st", "sip:a b@host", "sip:a<@host", "sip:a>@host", "sip:a\"@host",
                                           "sip:a\x7f@host", "sip:a\x01@host", "sip:a@ho$t", "sip:a@host:",
                                           "sip:a@host:80x", "sip:a@[::1]5060", "sip:a@[]", "sip:a@host\r\nX: y",
                                           "http://host", "sip:a@[::1", "tel:", "sip:a@host:port", "sip:a@<host>"));

// As it is written again, or "malformed".
std::string again(std::string_view text)
{
    auto const uri = Uri::parse(text);
    return uri ? uri->format() : "malformed";
}

TEST(UriTest, Forms_AreReadAndWrittenAgain)
{
    for (char const* const text :
         {"sip:host", "sips:a@host", "sip:a@host-1.example_2.org:65535", "sip:a@host:1", "sip:a@[::1]",
          "sip:a@[::1]:5060", "sip:a@host;lr", "sip:a@host;a=b;c", "sip:a@host?b=c", "sip:a@host;a=b?c=d&e=f",
          "sip:&=+$,;?/@host", "sip:-_.!~*'()@host", "sip:a%25b@host"}) {
        EXPECT_EQ(again(text), text);
    }
}

TEST(UriTest, WhatMeansTheSame_IsWrittenInOneForm)
{
    EXPECT_EQ(again("  SIP:a@host \r\n"), "sip:a@host");
    EXPECT_EQ(again("sip:@host"), "sip:host");
    EXPECT_EQ(again("sip:a:@host"), "sip:a@host");
    EXPECT_EQ(again("sip:a@host;;a=b;"), "sip:a@host;a=b");
    EXPECT_EQ(again("sip:a@host?"), "sip:a@host");
    EXPECT_EQ(again("sip:%61%2F%e4@host"), "sip:a/%E4@host");
    EXPECT_EQ(again("sip:a%7Eb@host"), "sip:a~b@host");
    EXPECT_EQ(again("sip:%@host"), "sip:%25@host");
    EXPECT_EQ(again("sip:%4@host"), "sip:%254@host");
    EXPECT_EQ(again("sip:%4g@host"), "sip:%254g@host");
    EXPECT_EQ(again("sip:%g4@host"), "sip:%25g4@host");
    EXPECT_EQ(again("sip:%:@host"), "sip:%25@host");
    EXPECT_EQ(again("sip:%/0%@0@host"), "malformed");
    EXPECT_EQ(again("sip:a@host?a=[]/?:+$&b=%40"), "sip:a@host?a=[]/?:+$&b=%40");
    EXPECT_EQ(again("tel:1;a=b"), "tel:1;a=b");
}

TEST(UriTest, Parameter_IsChangedInItsPlaceOrAdded)
{
    Uri uri = *Uri::parse("sip:a@host;x=1;y=2");

    uri.setParameter("X", "3");
    uri.setParameter("z", "4");

    EXPECT_EQ(uri.format(), "sip:a@host;x=3;y=2;z=4");
    EXPECT_EQ(uri.parameter("Y"), "2");
    EXPECT_EQ(uri.parameter("xx"), std::nullopt);
    EXPECT_EQ(uri.header("x"), std::nullopt);
}

TEST(UriTest, Names_AreEqualWhateverTheirCase)
{
    EXPECT_TRUE(equalsIgnoringCase("", ""));
    EXPECT_TRUE(equalsIgnoringCase("Auto", "aUTO"));
    EXPECT_FALSE(equalsIgnoringCase("Auto", "Aut"));
    EXPECT_FALSE(equalsIgnoringCase("Aut", "Auto"));
    EXPECT_FALSE(equalsIgnoringCase("a", "b"));
}

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

std::string addressAgain(std::string_view text)
{
    auto const address = NameAddr::parse(text);
    return address ? address->format() : "malformed";
}

TEST(NameAddrTest, Forms_AreWrittenInOneForm)
{
    EXPECT_EQ(addressAgain("sip:1@h"), "<sip:1@h>");
    EXPECT_EQ(addressAgain(" Al B <sip:1@h> ; tag = 7 "), "\"Al B\" <sip:1@h>;tag=7");
    EXPECT_EQ(addressAgain("\"\" <sip:1@h>"), "<sip:1@h>");
    EXPECT_EQ(addressAgain("\"a\\\\\" <sip:1@h>"), "\"a\\\\\" <sip:1@h>");
    EXPECT_EQ(addressAgain("\"a\tb\" <sip:1@h>"), "\"a b\" <sip:1@h>");
    EXPECT_EQ(addressAgain("\"<\" <sip:1@h>"), "\"(\" <sip:1@h>");
    EXPECT_EQ(addressAgain("\"a\\\", \" <sip:1@h>, <sip:2@h>"), "\"a\\\", \" <sip:1@h>");
    EXPECT_EQ(addressAgain("<sip:1@h,2>, <sip:2@h>"), "malformed");
    EXPECT_EQ(addressAgain("<>"), "malformed");
    EXPECT_EQ(addressAgain(""), "malformed");
    EXPECT_EQ(addressAgain("\"a"), "malformed");
    EXPECT_EQ(addressAgain("\"a\\\""), "malformed");
}

TEST(NameAddrTest, User_IsEmptyIfThereIsNoAddress)
{
    EXPECT_EQ(userOf("\"Al\" <sip:100@h>;tag=1"), "100");
    EXPECT_EQ(userOf("sip:h"), "");
    EXPECT_EQ(userOf("100"), "");
}

TEST(NameAddrTest, OfAList_IsTheFirst)
{
    EXPECT_EQ("1", NameAddr::parse("Al <sip:1@h>, <sip:2@h>")->uri.user);
    EXPECT_EQ((std::vector<std::string>{"\"a,b\" <sip:1@h,x>", "sip:2@h"}), splitList("\"a,b\" <sip:1@h,x>, sip:2@h"));
    EXPECT_FALSE(NameAddr::parse("\"open <sip:1@h>"));
    EXPECT_FALSE(NameAddr::parse("<sip:1@h"));
}

}  // namespace telephone::sip
