// What is read from the stack's own values.
#include "telephone/sip/Stack.h"

#include <cerrno>

#include <gtest/gtest.h>

#include "telephone/sip/ClientRequest.h"

namespace telephone::sip {
namespace {

// All headers of a request, "Name: value; ...", but those that every request has.
std::string headersIn(std::string const& headers)
{
    std::string const text = "INFO sip:4711@127.0.0.1 SIP/2.0\r\n" + headers + "\r\n";
    Ref<mbuf> buffer;
    EXPECT_TRUE(fill(buffer, text));
    Ref<sip_msg> message;
    EXPECT_EQ(sip_msg_decode(message.out(), buffer.get()), 0);
    std::string all;
    for (auto const& [name, value] : headersOf(*message.get())) {
        all += name + ": " + value + "; ";
    }
    return all;
}

TEST(StackTest, CompactForms_HaveTheirFullNames)
{
    EXPECT_EQ(
        headersIn("b: 1\r\nc: a/b\r\ne: 3\r\nf: <sip:1@h>;tag=1\r\ni: 4\r\nk: 5\r\nl: 0\r\nm: <sip:1@h>\r\n"),
        "Referred-By: 1; Content-Type: a/b; Content-Encoding: 3; From: <sip:1@h>;tag=1; Call-ID: 4; Supported: 5; "
        "Content-Length: 0; Contact: <sip:1@h>; ");
    EXPECT_EQ(
        headersIn("o: 1\r\nr: 2\r\ns: 3\r\nt: <sip:1@h>\r\nu: 4\r\nv: SIP/2.0/UDP h;branch=z9\r\nx: 5\r\ny: 6\r\n"),
        "Event: 1; Refer-To: 2; Subject: 3; To: <sip:1@h>; Allow-Events: 4; Via: SIP/2.0/UDP h;branch=z9; "
        "Session-Expires: 5; Identity: 6; ");
    EXPECT_EQ(headersIn("S: capital\r\nz: unknown\r\nSu: longer\r\n"), "Subject: capital; z: unknown; Su: longer; ");
}

TEST(StackTest, Addresses_AreWrittenWithTheirPort)
{
    sa address{};
    ASSERT_EQ(sa_set_str(&address, "192.0.2.7", 5060), 0);
    EXPECT_EQ(addressText(address), "192.0.2.7:5060");
    ASSERT_EQ(sa_set_str(&address, "2001:db8::1", 5061), 0);
    EXPECT_EQ(addressText(address), "[2001:db8::1]:5061");
}

TEST(StackTest, Tail_EndsTheHeadersAndHasTheBodyOfAType)
{
    EXPECT_EQ(replyTail({}, {}), "Content-Length: 0\r\n\r\n");
    EXPECT_EQ(replyTail({{"Expires", "60"}}, {"text/plain", "hello"}),
              "Expires: 60\r\nContent-Type: text/plain\r\nContent-Length: 5\r\n\r\nhello");
    EXPECT_EQ(replyTail({}, {"", "lost"}), "Content-Length: 0\r\n\r\n");
}

TEST(StackTest, Error_IsARefusalWithItsReason)
{
    EXPECT_TRUE(sent(0, "the INVITE"));
    EXPECT_EQ(sent(ECONNREFUSED, "the INVITE").error().reason, "the INVITE cannot be sent: Connection refused");
}

TEST(StackTest, Authentication_NeedsAllItsArguments)
{
    auto const handler = [](char**, char**, char const*, void*) { return 0; };
    Ref<sip_auth> authentication;

    EXPECT_EQ(sip_auth_alloc(nullptr, handler, nullptr, false), EINVAL);
    EXPECT_EQ(sip_auth_alloc(authentication.out(), nullptr, nullptr, false), EINVAL);
    ASSERT_EQ(sip_auth_alloc(authentication.out(), handler, nullptr, false), 0);
    EXPECT_EQ(sip_auth_authenticate(authentication.get(), nullptr), EINVAL);
}

TEST(StackTest, Error_IsATimeoutOrMeansThatTheServiceIsUnavailable)
{
    EXPECT_EQ(statusOf(ETIMEDOUT), 408);
    EXPECT_EQ(statusOf(ECONNREFUSED), 503);
}

}  // namespace
}  // namespace telephone::sip
