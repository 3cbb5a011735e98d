#include "SipFixture.h"
#include "telephone/time/SteadyClock.h"
#include "telephone/time/Waiting.h"
#include "tests/helpers/DnsTable.h"
#include "tests/helpers/TestTime.h"

namespace telephone::test {

namespace {

constexpr char const* kNobody = "127.0.0.9";

// An exchange whose name has two servers: one that a test chooses, and the exchange.
class Failover : public ExchangeTest
{
protected:
    Failover()
    {
        dns->address("nobody.test", kNobody);
        dns->address("exchange.test", "127.0.0.1");
    }

    // pbx.test is first at that host and port, then at the exchange.
    void preferServer(std::string const& host, std::uint16_t port, std::string const& transport = "udp")
    {
        std::string const name = "_sip._" + transport + ".pbx.test";
        dns->service(name, 10, 0, port, host, 3600);
        dns->service(name, 20, 0, exchangePort(), "exchange.test", 3600);
    }
    std::uint16_t exchangePort() const { return sip::Uri::parse("sip:" + exchange.hostPort())->port; }
    sip::UserAgentConfig config() const
    {
        sip::UserAgentConfig config;
        config.dns = dns;
        return config;
    }
    // How long the function takes, in milliseconds of the telephone's clock.
    static std::int64_t timeOf(std::function<void()> const& work)
    {
        auto const begin = SteadyClock::now();
        work();
        return std::chrono::duration_cast<std::chrono::milliseconds>(SteadyClock::now() - begin).count();
    }
    std::size_t questions()
    {
        std::lock_guard const guard(loop);
        return std::exchange(dns->asked, {}).size();
    }

    std::shared_ptr<DnsTable> const dns = std::make_shared<DnsTable>(&loop);
};

}  // namespace

TEST_F(Failover, SilentFirstServer_RegistersAtTheSecondWithinFourSeconds)
{
    preferServer("nobody.test", 5060);
    SipPeer phone(loop, "4711", config());

    auto const taken = timeOf([&] {
        phone.registerAt("pbx.test");
        EXPECT_TRUE(phone.waitFor("registered 3600")) << phone.events();
    });

    EXPECT_GT(taken, 3000);
    EXPECT_LE(taken, 4000);
    EXPECT_TRUE(exchange.isRegistered("4711"));
}

TEST_F(Failover, LastServerOfARegistration_HasEightSecondsOfItsOwn)
{
    dns->address("nowhere.test", "127.0.0.8");
    dns->service("_sip._udp.pbx.test", 10, 0, 5060, "nobody.test");
    dns->service("_sip._udp.pbx.test", 20, 0, 5060, "nowhere.test");
    SipPeer phone(loop, "4711", config());

    auto const taken = timeOf([&] {
        phone.registerAt("pbx.test");
        EXPECT_TRUE(phone.waitFor("unregistered 408", 20s)) << phone.events();
    });

    EXPECT_GE(taken, 11'800);
    EXPECT_LT(taken, 12'000);
}

TEST_F(Failover, FailedServerOfALine_IsTriedAgainByItsRegistrationFirst)
{
    if (!isTimeOfTestsVirtual()) {
        GTEST_SKIP() << "takes twelve minutes in real time";
    }
    std::string logged;
    auto settings = config();
    settings.log = [&logged](sip::LogLevel, std::string const& line) { logged += line + "\n"; };
    preferServer("nobody.test", 5060);
    SipPeer phone(loop, "4711", settings);
    phone.registerAt("pbx.test", "secret", [](sip::Account& account) { account.expires = 800; });
    ASSERT_TRUE(phone.waitFor("registered 800")) << phone.events();
    sleepFor(650s);
    logged.clear();

    phone.call("sip:100@pbx.test");
    ASSERT_TRUE(phone.waitFor("established")) << phone.events();
    EXPECT_EQ("", logged);

    // A refresh is due after 720 seconds.
    sleepFor(74s);
    std::string const port = std::to_string(exchangePort());
    EXPECT_EQ("REGISTER to pbx.test: udp 127.0.0.9:5060: does not answer; udp 127.0.0.1:" + port + " is next\n",
              logged);
}

TEST_F(Failover, ServerThatAnswered_IsKeptForCallsAndSubscriptions)
{
    preferServer("nobody.test", 5060);
    SipPeer phone(loop, "4711", config());
    phone.registerAt("pbx.test");
    ASSERT_TRUE(phone.waitFor("registered 3600")) << phone.events();
    questions();

    auto const taken = timeOf([&] {
        phone.call("sip:100@pbx.test");
        EXPECT_TRUE(phone.waitFor("established")) << phone.events();
        phone.subscribe("sip:100@pbx.test", "dialog", "application/dialog-info+xml");
        EXPECT_TRUE(phone.waitFor("notify dialog")) << phone.events();
    });

    EXPECT_LT(taken, 1000);
    EXPECT_EQ(questions(), 0U);
}

TEST_F(Failover, CallWithoutRegistration_ReachesTheSecondServerWithinFourSeconds)
{
    preferServer("nobody.test", 5060);
    SipPeer phone(loop, "4711", config());

    auto const taken = timeOf([&] {
        phone.call("sip:100@pbx.test");
        EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    });
    phone.session().hangUp();

    EXPECT_GT(taken, 3000);
    EXPECT_LE(taken, 4000);
}

TEST_F(Failover, RefusedConnection_LeadsToTheNextServerAtOnce)
{
    preferServer("nobody.test", 5060, "tcp");
    SipPeer phone(loop, "4711", config());

    auto const taken = timeOf([&] {
        phone.registerAt("pbx.test", "secret", [](auto& account) { account.transport = sip::Transport::kTcp; });
        EXPECT_TRUE(phone.waitFor("registered 3600")) << phone.events();
    });

    EXPECT_LT(taken, 500);
}

TEST_F(Failover, ServiceUnavailable_LeadsToTheNextServerAtOnce)
{
    SipPeer busy(loop, "busy");
    busy.whenCalled = [](SipPeer&, sip::Session& session) { session.reject(503, "Service Unavailable"); };
    dns->address("busy.test", "127.0.0.1");
    preferServer("busy.test", busy.agent->udpPort());
    SipPeer phone(loop, "4711", config());

    auto const taken = timeOf([&] {
        phone.call("sip:100@pbx.test");
        EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    });

    EXPECT_LT(taken, 500);
    EXPECT_TRUE(busy.waitFor("called", 0ms));
}

TEST_F(Failover, ServersThatAllRefuse_PassTheLastAnswerOn)
{
    SipPeer busy(loop, "busy");
    busy.whenCalled = [](SipPeer&, sip::Session& session) { session.reject(503, "Overloaded"); };
    dns->address("busy.test", "127.0.0.1");
    SipPeer phone(loop, "4711", config());

    phone.call("sip:100@busy.test:" + std::to_string(busy.agent->udpPort()));

    EXPECT_TRUE(phone.waitFor("closed rejected 503")) << phone.events();
    EXPECT_EQ(phone.lastClosing.text, "Overloaded");
}

TEST_F(Failover, RepairedServer_IsUsedAgainAfterTenMinutes)
{
    if (!isTimeOfTestsVirtual()) {
        GTEST_SKIP() << "takes ten minutes in real time";
    }
    SipPeer first(loop, "first");
    first.whenCalled = [](SipPeer&, sip::Session& session) { session.reject(503, "Service Unavailable"); };
    dns->address("first.test", "127.0.0.1");
    preferServer("first.test", first.agent->udpPort());
    SipPeer phone(loop, "4711", config());
    phone.call("sip:100@pbx.test");
    ASSERT_TRUE(phone.waitFor("established")) << phone.events();
    ASSERT_TRUE(first.waitFor("called", 0ms));
    first.whenCalled = [](SipPeer&, sip::Session& session) { EXPECT_TRUE(session.answer()); };

    phone.call("sip:100@pbx.test");
    ASSERT_TRUE(phone.waitFor("established")) << phone.events();
    EXPECT_FALSE(first.waitFor("called", 0ms));

    sleepFor(601s);
    phone.call("sip:100@pbx.test");
    ASSERT_TRUE(phone.waitFor("established")) << phone.events();
    EXPECT_TRUE(first.waitFor("called", 0ms));
}

TEST_F(Failover, UnknownName_EndsTheCallAtOnceWithItsReason)
{
    SipPeer phone(loop, "4711", config());

    auto const taken = timeOf([&] {
        phone.call("sip:100@nowhere.test");
        EXPECT_TRUE(phone.waitFor("closed failed 503")) << phone.events();
    });

    EXPECT_LT(taken, 100);
    EXPECT_EQ(phone.lastClosing.text, "DNS knows no server \"nowhere.test\"");
    sip::CallRequest request;
    request.account = phone.account;
    request.target = "sip:101@nowhere.test";
    auto const again = phone.agent->call(request, phone);
    ASSERT_FALSE(again);
    EXPECT_EQ(again.error(), (Refusal{RefusalKind::kNotFound, "DNS knows no server \"nowhere.test\""}));
}

TEST_F(Failover, SilentDns_EndsTheRegistrationWithinFiveSecondsWithItsReason)
{
    std::string logged;
    auto settings = config();
    settings.log = [&logged](sip::LogLevel, std::string const& line) { logged = line; };
    SipPeer phone(loop, "4711", settings);
    dns->fallSilent();

    auto const taken = timeOf([&] {
        phone.registerAt("pbx.test");
        EXPECT_TRUE(phone.waitFor("unregistered 503")) << phone.events();
    });

    EXPECT_LE(taken, 5000);
    EXPECT_EQ(
        logged,
        "Registration of sip:4711@pbx.test failed: 503 the server \"pbx.test\" cannot be looked up: no DNS server "
        "answers (asked 192.0.2.53:53)");
}

TEST_F(Failover, CallThatIsHungUpDuringTheSearch_Ends)
{
    SipPeer phone(loop, "4711", config());
    dns->fallSilent();
    phone.call("sip:100@pbx.test");

    phone.dropSession(0);

    EXPECT_FALSE(phone.waitFor("closed failed 503", 10s));
}

TEST_F(Failover, NameInARedirection_IsLookedUp)
{
    SipPeer other(loop, "other");
    other.whenCalled = [this](SipPeer&, sip::Session& session) {
        EXPECT_TRUE(session.redirect("sip:100@exchange.test:" + std::to_string(exchangePort())));
    };
    SipPeer phone(loop, "4711", config());

    phone.call("sip:1@" + other.agent->hostPort());

    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
}

}  // namespace telephone::test
