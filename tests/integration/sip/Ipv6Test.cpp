#include "SipFixture.h"

namespace telephone::test {

namespace {

// A telephone and an exchange without IPv4.
class Ipv6 : public SipTest
{
protected:
    sip::UserAgentConfig config()
    {
        sip::UserAgentConfig config;
        config.address = "::1";
        config.traceMessages = [] { return true; };
        config.log = [this](sip::LogLevel, std::string const& line) { messages += line + "\n"; };
        return config;
    }
    // Whether a message had these words.
    bool wasSent(std::string const& words)
    {
        std::lock_guard const guard(loop);
        return messages.find(words) != std::string::npos;
    }

    static exchange::ExchangeConfig exchangeConfig()
    {
        exchange::ExchangeConfig config;
        config.address = "::1";
        return config;
    }

    std::string messages;
    exchange::Exchange exchange{loop, exchangeConfig()};
};

}  // namespace

TEST_F(Ipv6, Line_RegistersAndCallsThroughTheExchange)
{
    SipPeer phone(loop, "4711", config());
    phone.registerAt(exchange.hostPort());
    ASSERT_TRUE(phone.waitFor("registered 3600")) << phone.events();
    EXPECT_EQ(contactOf(exchange, "4711"), "sip:4711@" + phone.agent->hostPort() + ";line=***");

    phone.call("sip:100@" + exchange.hostPort());
    ASSERT_TRUE(phone.waitFor("established")) << phone.events();

    EXPECT_EQ(exchange.hostPort().substr(0, 6), "[::1]:");
    EXPECT_TRUE(wasSent("c=IN IP6 ::1\r\n"));
    EXPECT_FALSE(wasSent("IP4"));
    EXPECT_EQ(phone.session().localContact(), "sip:4711@" + phone.agent->hostPort());
}

TEST_F(Ipv6, AddressOfTheOtherFamily_IsRefusedWithTheReason)
{
    SipPeer phone(loop, "4711", config());
    sip::CallRequest request;
    request.account = phone.account;
    request.target = "sip:100@127.0.0.1";

    auto const refused = phone.agent->call(request, phone);

    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error(), (Refusal{RefusalKind::kUnavailable,
                                        "127.0.0.1:5060 cannot be reached: the telephone has no IPv4 address"}));
}

TEST_F(Ipv6, TwoTelephones_TalkOverTcp)
{
    SipPeer caller(loop, "4711", config());
    SipPeer called(loop, "4712", config());

    caller.call("sip:4712@" + called.agent->hostPort(sip::Transport::kTcp) + ";transport=tcp");
    ASSERT_TRUE(caller.waitFor("established")) << caller.events();
    ASSERT_TRUE(called.waitFor("established")) << called.events();
    EXPECT_TRUE(caller.session().modify(sip::Direction::kSendOnly));
    EXPECT_TRUE(called.waitFor("held")) << called.events();
    caller.session().hangUp();

    EXPECT_TRUE(called.waitFor("closed remote")) << called.events();
}

}  // namespace telephone::test
