// Names of servers, looked up at a DNS server of another make (dnsmasq) on loopback, in real time.
#include <atomic>
#include <cerrno>
#include <random>

#include <dlfcn.h>
#include <sys/socket.h>

#include "LocalDns.h"
#include "SipFixture.h"
#include "telephone/sip/DnsClient.h"
#include "telephone/sip/ServerSearch.h"
#include "tests/helpers/TestTime.h"

namespace {

std::atomic<bool> hasIpv6{true};

}  // namespace

// Every socket of this program: a test can take IPv6 away, as the kernel of a machine without it does.
extern "C" int socket(int family, int type, int protocol) noexcept
{
    static auto* const next = reinterpret_cast<decltype(&::socket)>(dlsym(RTLD_NEXT, "socket"));
    if (family == AF_INET6 && !hasIpv6) {
        errno = EAFNOSUPPORT;
        return -1;
    }
    return next(family, type, protocol);
}

namespace telephone::test {

namespace {

// Nothing listens there.
constexpr char const* kNobody = "127.0.0.9";
// Virtual time measures exactly (FailoverTest.cpp). In real time a busy machine adds to it: less than the stack alone
// would wait for a server (32 s) or DNS (214 s).
constexpr std::int64_t kSoon = 9000;

class DnsServer : public ExchangeTest
{
protected:
    // Starts the DNS server with these records and those of the exchange.
    void serve(std::string const& records)
    {
        dns_.serve("host-record=exchange.test,127.0.0.1\nhost-record=nobody.test," + std::string(kNobody) + "\n" +
                   records);
    }
    std::string exchangePort() const { return std::to_string(sip::Uri::parse("sip:" + exchange.hostPort())->port); }
    std::string dns() const { return dns_.address(); }
    sip::UserAgentConfig config()
    {
        sip::UserAgentConfig config;
        config.dnsServers = {dns()};
        config.log = [this](sip::LogLevel, std::string const& line) { logged += line + "\n"; };
        return config;
    }

    std::string logged;

private:
    LocalDns dns_;
};

}  // namespace

TEST_F(DnsServer, DomainWithPreferences_IsReachedOverItsTransport)
{
    serve("naptr-record=pbx.test,20,10,s,SIP+D2U,,_sip._udp.pbx.test\n"
          "naptr-record=pbx.test,10,10,s,SIP+D2T,,_sip._tcp.pbx.test\n"
          "srv-host=_sip._udp.pbx.test,nobody.test,5060,10,10\n"
          "srv-host=_sip._tcp.pbx.test,exchange.test," +
          exchangePort() + ",10,10\n");
    SipPeer phone(loop, "4711", config());

    phone.registerAt("pbx.test");

    ASSERT_TRUE(phone.waitFor("registered 3600")) << phone.events();
    EXPECT_EQ(contactOf(exchange, "4711"),
              "sip:4711@" + phone.agent->hostPort(sip::Transport::kTcp) + ";line=***;transport=tcp");
}

TEST_F(DnsServer, NameWithPort_IsReachedAtItsAddress)
{
    serve("");
    SipPeer phone(loop, "4711", config());

    phone.call("sip:100@exchange.test:" + exchangePort());

    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
}

TEST_F(DnsServer, MachineWithoutIpv6_LooksNamesUp)
{
    serve("");
    SipPeer phone(loop, "4711", config());
    hasIpv6 = false;

    phone.call("sip:100@exchange.test:" + exchangePort());

    EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    hasIpv6 = true;
}

TEST_F(DnsServer, DeadFirstServer_LosesItsRequestsToTheSecond)
{
    serve("srv-host=_sip._udp.pbx.test,nobody.test,5060,10,10\n"
          "srv-host=_sip._udp.pbx.test,exchange.test," +
          exchangePort() + ",20,10\n");
    SipPeer phone(loop, "4711", config());

    auto const toRegister = millisecondsOf([&] {
        phone.registerAt("pbx.test");
        EXPECT_TRUE(phone.waitFor("registered 3600")) << phone.events();
    });
    auto const toCall = millisecondsOf([&] {
        phone.call("sip:100@pbx.test");
        EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    });

    EXPECT_GT(toRegister, 3000);
    EXPECT_LT(toRegister, kSoon);
    EXPECT_LT(toCall, kAtOnce);
    std::lock_guard const guard(loop);
    EXPECT_NE(logged.find("REGISTER to pbx.test: udp 127.0.0.9:5060: does not answer; udp 127.0.0.1:" + exchangePort() +
                          " is next\n"),
              std::string::npos)
        << logged;
}

TEST_F(DnsServer, FirstServerThatRefuses_LosesTheCallToTheSecondAtOnce)
{
    SipPeer busy(loop, "busy");
    busy.whenCalled = [](SipPeer&, sip::Session& session) { session.reject(503, "Service Unavailable"); };
    serve("srv-host=_sip._udp.pbx.test,exchange.test," + std::to_string(busy.agent->udpPort()) +
          ",10,10\nsrv-host=_sip._udp.pbx.test,exchange.test," + exchangePort() + ",20,10\n");
    SipPeer phone(loop, "4711", config());

    auto const taken = millisecondsOf([&] {
        phone.call("sip:100@pbx.test");
        EXPECT_TRUE(phone.waitFor("established")) << phone.events();
    });

    EXPECT_LT(taken, kAtOnce);
    EXPECT_TRUE(busy.waitFor("called", 0ms));
}

TEST_F(DnsServer, UnknownName_EndsTheCallAtOnceWithItsReason)
{
    serve("");
    SipPeer phone(loop, "4711", config());

    auto const taken = millisecondsOf([&] {
        phone.call("sip:100@nowhere.test");
        EXPECT_TRUE(phone.waitFor("closed failed 503")) << phone.events();
    });

    EXPECT_LT(taken, kAtOnce);
    EXPECT_EQ(phone.lastClosing.text, "DNS knows no server \"nowhere.test\"");
}

TEST_F(DnsServer, DeadDns_EndsTheCallWithItsReason)
{
    SipPeer phone(loop, "4711", config());

    auto const taken = millisecondsOf([&] {
        phone.call("sip:100@pbx.test");
        EXPECT_TRUE(phone.waitFor("closed failed 503")) << phone.events();
    });

    EXPECT_LT(taken, kSoon);
    EXPECT_EQ(phone.lastClosing.text,
              "the server \"pbx.test\" cannot be looked up: no DNS server answers (asked " + dns() + ")");
}

TEST_F(DnsServer, Ipv6Name_IsReachedFromAnInterfaceWithBothFamilies)
{
    serve("host-record=six.test,::1\n");
    SipPeer six(loop, "six", [] {
        sip::UserAgentConfig config;
        config.address = "::1";
        return config;
    }());
    auto both = config();
    both.address = "lo";
    SipPeer phone(loop, "4711", both);

    phone.call("sip:six@six.test:" + std::to_string(six.agent->udpPort()));

    ASSERT_TRUE(phone.waitFor("established")) << phone.events();
    EXPECT_EQ(six.lastInvitation.headers.value("Contact"),
              "<sip:4711@[::1]:" + std::to_string(phone.agent->udpPort()) + ">");
}

TEST_F(DnsServer, WeightsOfServices_AreTheirShares)
{
    serve("srv-host=_sip._udp.pbx.test,exchange.test,5060,10,30\n"
          "srv-host=_sip._udp.pbx.test,nobody.test,5060,10,10\n");
    std::mt19937 numbers(1);
    sip::DnsClient client({dns()});
    sip::ServerSearch::Settings const settings{
        {sip::Transport::kUdp}, {sip::AddressFamily::kIpv4}, [&numbers](std::uint32_t greatest) {
            return static_cast<std::uint32_t>(numbers() % (std::uint64_t{greatest} + 1));
        }};
    std::map<std::string, int> first;

    for (int i = 0; i < 100; ++i) {
        std::shared_ptr<sip::ServerSearch> search;
        int const before = first["found"];
        {
            std::lock_guard const guard(loop);
            search = std::make_shared<sip::ServerSearch>(
                loop, client, sip::Destination{"pbx.test", 0, sip::Transport::kUdp}, settings, [&](auto const& result) {
                    ++first["found"];
                    ++first[result ? result->places.front().place.address : result.error().reason];
                });
            search->start();
        }
        ASSERT_TRUE(eventually([&] {
            std::lock_guard const guard(loop);
            return first["found"] > before;
        }));
        std::lock_guard const guard(loop);
        search.reset();
    }

    std::lock_guard const guard(loop);
    EXPECT_NEAR(first["127.0.0.1"], 75, 20);
    EXPECT_EQ(first["127.0.0.1"] + first[kNobody], 100);
}

}  // namespace telephone::test
