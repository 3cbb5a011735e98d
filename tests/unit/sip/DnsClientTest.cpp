// What needs no DNS server. With one, DnsServerTest.cpp tests the client.
#include "telephone/sip/DnsClient.h"

#include <mutex>

#include <gtest/gtest.h>

#include "telephone/sip/EventLoop.h"
#include "telephone/sip/Stack.h"

namespace telephone::sip {
namespace {

std::string serverOf(std::string const& text)
{
    auto const server = dnsServerOf(text);
    return server ? addressText(*server) : "none";
}

TEST(DnsClientTest, Server_IsAnAddressWithThePort53OrAnother)
{
    EXPECT_EQ(serverOf("192.0.2.1"), "192.0.2.1:53");
    EXPECT_EQ(serverOf("192.0.2.1:5353"), "192.0.2.1:5353");
    EXPECT_EQ(serverOf("2001:db8::1"), "[2001:db8::1]:53");
    EXPECT_EQ(serverOf("[2001:db8::1]:5353"), "[2001:db8::1]:5353");
    EXPECT_EQ(serverOf("dns.example"), "none");
    EXPECT_EQ(serverOf(""), "none");
}

TEST(DnsClientTest, WithoutAUsableServer_FailsAtOnceAndSaysWhatToDo)
{
    EventLoop loop;
    std::lock_guard const guard(loop);
    DnsClient client({"dns.example"});
    std::vector<DnsAnswer> answers;

    client.ask("pbx.test", DnsType::kA, [&answers](DnsAnswer const& answer) { answers.push_back(answer); });

    ASSERT_EQ(answers.size(), 1U);
    EXPECT_EQ(answers[0].status, DnsStatus::kFailed);
    EXPECT_EQ(answers[0].reason, "this machine has no DNS server; name one in dns.servers");
}

}  // namespace
}  // namespace telephone::sip
