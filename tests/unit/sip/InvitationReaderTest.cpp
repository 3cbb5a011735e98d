// What an INVITE says of the caller, of diversions, and of how it wants to be answered.
#include "telephone/sip/InvitationReader.h"

#include <gtest/gtest.h>

namespace telephone::sip {
namespace {

Invitation invitationWith(std::string const& headers, bool fromServer = true)
{
    std::string const text =
        "INVITE sip:4711@127.0.0.1 SIP/2.0\r\nVia: SIP/2.0/UDP 127.0.0.1:5099;branch=z9hG4bK1\r\n"
        "From: <sip:100@127.0.0.1>;tag=a\r\nTo: <sip:4711@127.0.0.1>\r\nCall-ID: call\r\nCSeq: 1 INVITE\r\n" +
        headers + "Content-Length: 0\r\n\r\n";
    Ref<mbuf> buffer;
    *buffer.out() = mbuf_alloc(text.size());
    EXPECT_EQ(mbuf_write_str(buffer.get(), text.c_str()), 0);
    mbuf_set_pos(buffer.get(), 0);
    Ref<sip_msg> message;
    EXPECT_EQ(sip_msg_decode(message.out(), buffer.get()), 0);
    return readInvitation(*message.get(), fromServer);
}

// "4799 user-busy, 4798 unknown"
std::string diversionsIn(std::string const& headers)
{
    std::string all;
    for (Diversion const& each : invitationWith(headers).diversions) {
        all += (all.empty() ? "" : ", ") + each.party.uri.user + " " + each.reason;
    }
    return all;
}

bool isAutomatic(std::string const& headers)
{
    return invitationWith(headers).answerAutomatically;
}

TEST(InvitationReaderTest, Diversions_AreReadInTheirOrder)
{
    EXPECT_EQ(diversionsIn(""), "");
    EXPECT_EQ(diversionsIn("Diversion: <sip:4799@h>;reason=user-busy\r\nDiversion: <sip:4798@h>;reason=unknown\r\n"),
              "4799 user-busy, 4798 unknown");
    EXPECT_EQ(diversionsIn("Diversion: <sip:4799@h>, <sip:4798@h>\r\n"), "4799 , 4798 ");
}

TEST(InvitationReaderTest, QuotedReason_IsReadWithoutItsQuotes)
{
    EXPECT_EQ(diversionsIn("Diversion: <sip:4799@h>;reason=\"user-busy\"\r\n"), "4799 user-busy");
    EXPECT_EQ(diversionsIn("Diversion: <sip:4799@h>;reason=\"\"\r\n"), "4799 ");
    EXPECT_EQ(diversionsIn("Diversion: <sip:4799@h>;reason=\"\r\n"), "4799 \"");
}

TEST(InvitationReaderTest, History_GivesTheDiversionsWithTheLatestFirst)
{
    EXPECT_EQ(diversionsIn("History-Info: <sip:4798@h>;index=1, <sip:4799@h;cause=486>;index=1.1, "
                           "<sip:4711@h;cause=408>;index=1.2\r\n"),
              "4799 user-busy, 4798 user-busy");
    EXPECT_EQ(diversionsIn("History-Info: <sip:4799@h>;index=1\r\n"), "");
}

TEST(InvitationReaderTest, CauseInHistory_IsThatOfTheEntryElseOfTheNextOne)
{
    EXPECT_EQ(diversionsIn("History-Info: <sip:4799@h?Reason=SIP%3Bcause%3D302>;index=1, <sip:4711@h>;index=1.1\r\n"),
              "4799 unconditional");
    EXPECT_EQ(diversionsIn("History-Info: <sip:4799@h?Reason=SIP%3Bcause%3D302>;index=1, "
                           "<sip:4711@h;cause=486>;index=1.1\r\n"),
              "4799 unconditional");
    EXPECT_EQ(diversionsIn("History-Info: <sip:4799@h?Reason=nothing>;index=1, <sip:4711@h;cause=999>;index=1.1\r\n"),
              "4799 ");
}

TEST(InvitationReaderTest, EachCauseOfHistory_HasItsReason)
{
    auto const reasonOf = [](std::string const& cause) {
        return diversionsIn("History-Info: <sip:4799@h>;index=1, <sip:4711@h;cause=" + cause + ">;index=1.1\r\n");
    };
    EXPECT_EQ(reasonOf("302"), "4799 unconditional");
    EXPECT_EQ(reasonOf("404"), "4799 unknown");
    EXPECT_EQ(reasonOf("408"), "4799 no-answer");
    EXPECT_EQ(reasonOf("480"), "4799 deflection");
    EXPECT_EQ(reasonOf("486"), "4799 user-busy");
    EXPECT_EQ(reasonOf("503"), "4799 unavailable");
}

TEST(InvitationReaderTest, AutomaticAnswer_IsAskedForInFiveWays)
{
    EXPECT_TRUE(isAutomatic("Answer-Mode: Auto\r\n"));
    EXPECT_TRUE(isAutomatic("Answer-Mode: auto;require\r\n"));
    EXPECT_TRUE(isAutomatic("Priv-Answer-Mode: Auto\r\n"));
    EXPECT_TRUE(isAutomatic("Call-Info: <sip:x>;answer-after=0\r\n"));
    EXPECT_TRUE(isAutomatic("Alert-Info: <http://x>;info=alert-autoanswer\r\n"));
    EXPECT_FALSE(isAutomatic("Answer-Mode: Manual\r\nAlert-Info: <http://x>\r\nCall-Info: <http://x>\r\n"));
    EXPECT_FALSE(isAutomatic(""));
}

TEST(InvitationReaderTest, AssertedIdentity_IsTheCallerElseFrom)
{
    EXPECT_EQ(invitationWith("").caller().uri.user, "100");
    EXPECT_EQ(invitationWith("P-Asserted-Identity: \"Seven\" <sip:7777@h>\r\n").caller().uri.user, "7777");
    EXPECT_EQ(invitationWith("P-Asserted-Identity: <\r\n").caller().uri.user, "100");
    EXPECT_EQ(invitationWith("P-Asserted-Identity: \"Seven\" <sip:7777@h>\r\n", false).caller().uri.user, "100");
}

TEST(InvitationReaderTest, OtherHeaders_AreKept)
{
    Invitation const invitation =
        invitationWith("Alert-Info: <http://bell>\r\nResource-Priority: dsn.flash\r\nReferred-By: <sip:1@h>\r\n"
                       "Replaces: call;to-tag=1;from-tag=2\r\n");

    EXPECT_EQ(invitation.requestUri, "sip:4711@127.0.0.1");
    EXPECT_EQ(invitation.to.uri.user, "4711");
    EXPECT_EQ(invitation.alertInfo, "<http://bell>");
    EXPECT_EQ(invitation.resourcePriority, "dsn.flash");
    EXPECT_EQ(invitation.referredBy, "<sip:1@h>");
    EXPECT_EQ(invitation.replaces, (Replaces{"call", "1", "2", false}));
    EXPECT_EQ(invitation.headers.value("Call-ID"), "call");
}

}  // namespace
}  // namespace telephone::sip
