// Servers that are found by their name and reached over TLS: looked up at a DNS server of another make (dnsmasq) on
// loopback, in real time.
#include <array>

#include "LocalDns.h"
#include "SipFixture.h"
#include "tests/helpers/TestCertificates.h"

namespace telephone::test {

namespace {

// Two servers of pbx.test.
class TlsServers : public SipTest
{
protected:
    sip::TlsConfig tlsOf(TestCertificates::Files const& own) const
    {
        return {own.certificate, own.key, [file = certificates_.authorities()](std::string const&) { return file; }};
    }
    void startServer(std::size_t index, TestCertificates::Files const& own, bool asksForCertificates = false)
    {
        exchange::ExchangeConfig config;
        config.tls = tlsOf(own);
        config.tls->asksForCertificates = asksForCertificates;
        servers_.at(index).emplace(loop, config);
    }
    std::string portOf(std::size_t index, sip::Transport transport = sip::Transport::kTls) const
    {
        return std::to_string(sip::Uri::parse("sip:" + servers_.at(index)->hostPort(transport))->port);
    }
    // The first is preferred to the second.
    void serveBoth()
    {
        dns_.serve("host-record=server.test,127.0.0.1\n"
                   "srv-host=_sips._tcp.pbx.test,server.test," +
                   portOf(0) + ",10,10\nsrv-host=_sips._tcp.pbx.test,server.test," + portOf(1) + ",20,10\n");
    }
    std::unique_ptr<SipPeer> phone(TestCertificates::Files const& own = {})
    {
        sip::UserAgentConfig config;
        config.tls = tlsOf(own);
        config.tlsFromTheStart = !own.certificate.empty();
        config.dnsServers = {dns_.address()};
        config.traceMessages = [] { return true; };
        config.log = [this](sip::LogLevel, std::string const& line) { log_ += line + "\n"; };
        return std::make_unique<SipPeer>(loop, "4711", config);
    }
    static void registerOverTls(SipPeer& peer)
    {
        peer.registerAt("pbx.test", "secret", [](sip::Account& account) { account.transport = sip::Transport::kTls; });
    }
    bool hasLogged(std::string const& text)
    {
        std::lock_guard const guard(loop);
        return log_.find(text) != std::string::npos;
    }
    bool isRegisteredAt(std::size_t index) { return servers_.at(index)->isRegistered("4711"); }

    TestCertificates certificates_;
    LocalDns dns_;
    std::array<std::optional<exchange::Exchange>, 2> servers_;
    std::string log_;
};

}  // namespace

TEST_F(TlsServers, Registrar_IsFoundByThePreferenceOfItsDomainForTls)
{
    startServer(0, certificates_.make("DNS:pbx.test"));
    dns_.serve("naptr-record=pbx.test,10,10,s,SIP+D2T,,_sip._tcp.pbx.test\n"
               "naptr-record=pbx.test,20,10,s,SIPS+D2T,,_secure._tcp.pbx.test\n"
               "host-record=server.test,127.0.0.1\n"
               "srv-host=_secure._tcp.pbx.test,server.test," +
               portOf(0) + ",10,10\n");
    auto const peer = phone();

    registerOverTls(*peer);

    ASSERT_TRUE(peer->waitFor("registered 3600")) << peer->events() << log_;
    EXPECT_EQ(contactOf(*servers_[0], "4711"),
              "sip:4711@" + peer->agent->hostPort(sip::Transport::kTls) + ";line=***;transport=tls");
}

TEST_F(TlsServers, SipsDestination_IsFoundByItsServices)
{
    startServer(0, certificates_.make("DNS:pbx.test"));
    startServer(1, certificates_.make("DNS:pbx.test"));
    serveBoth();
    auto const peer = phone(certificates_.make());

    peer->call("sips:100@pbx.test");

    ASSERT_TRUE(peer->waitFor("established")) << peer->events() << log_;
    EXPECT_TRUE(hasLogged("sent to 127.0.0.1:" + portOf(0) + "\nINVITE sips:100@pbx.test SIP/2.0\r\n")) << log_;
    EXPECT_TRUE(hasLogged("Via: SIP/2.0/TLS ")) << log_;
}

TEST_F(TlsServers, AddressWithoutATransport_FollowsThePreferenceForTls)
{
    startServer(0, certificates_.make("DNS:pbx.test"));
    dns_.serve("naptr-record=pbx.test,10,10,s,SIPS+D2T,,_sips._tcp.pbx.test\n"
               "naptr-record=pbx.test,20,10,s,SIP+D2U,,_sip._udp.pbx.test\n"
               "host-record=server.test,127.0.0.1\n"
               "srv-host=_sips._tcp.pbx.test,server.test," +
               portOf(0) + ",10,10\nsrv-host=_sip._udp.pbx.test,server.test," + portOf(0, sip::Transport::kUdp) +
               ",10,10\n");
    auto const secure = phone(certificates_.make());
    auto const plain = phone();

    secure->call("sip:100@pbx.test");
    ASSERT_TRUE(secure->waitFor("established")) << secure->events() << log_;
    EXPECT_FALSE(hasLogged("Via: SIP/2.0/UDP ")) << log_;

    // It has no TLS yet.
    plain->call("sip:100@pbx.test");
    ASSERT_TRUE(plain->waitFor("established")) << plain->events() << log_;
    EXPECT_TRUE(hasLogged("Via: SIP/2.0/UDP ")) << log_;
}

TEST_F(TlsServers, CertificateForTheHostThatDnsNames_IsRefused)
{
    startServer(0, certificates_.make("DNS:server.test,IP:127.0.0.1"));
    startServer(1, certificates_.make("DNS:server.test,IP:127.0.0.1"));
    serveBoth();
    auto const peer = phone();

    registerOverTls(*peer);

    ASSERT_TRUE(peer->waitFor("unregistered 502")) << peer->events() << log_;
    EXPECT_EQ(peer->lastFailure, "the certificate of pbx.test is for server.test and 127.0.0.1");
    EXPECT_FALSE(hasLogged("REGISTER sip:")) << log_;
}

TEST_F(TlsServers, FailedHandshake_LeadsToTheNextServerAtOnce)
{
    startServer(0, certificates_.make("DNS:pbx.test", -1));
    startServer(1, certificates_.make("DNS:pbx.test"));
    serveBoth();
    auto const peer = phone(certificates_.make());

    auto const toRegister = millisecondsOf([&] {
        registerOverTls(*peer);
        EXPECT_TRUE(peer->waitFor("registered 3600")) << peer->events() << log_;
    });
    auto const toCall = millisecondsOf([&] {
        peer->call("sips:100@pbx.test");
        EXPECT_TRUE(peer->waitFor("established")) << peer->events() << log_;
    });

    EXPECT_LT(toRegister, kAtOnce);
    EXPECT_LT(toCall, kAtOnce);
    EXPECT_TRUE(isRegisteredAt(1));
    EXPECT_TRUE(hasLogged("TLS fails: the certificate of pbx.test expired on 20")) << log_;
    EXPECT_TRUE(hasLogged("tls 127.0.0.1:" + portOf(1) + " is next\n")) << log_;
    EXPECT_FALSE(hasLogged("sent to 127.0.0.1:" + portOf(0) + "\n")) << log_;
}

TEST_F(TlsServers, ServerThatEndsTheConnectionBeforeItAnswers_LosesTheRequestToTheNextAtOnce)
{
    startServer(0, certificates_.make("DNS:pbx.test"), true);
    startServer(1, certificates_.make("DNS:pbx.test"));
    serveBoth();
    auto const peer = phone();

    auto const taken = millisecondsOf([&] {
        registerOverTls(*peer);
        EXPECT_TRUE(peer->waitFor("registered 3600")) << peer->events() << log_;
    });

    EXPECT_LT(taken, kAtOnce);
    EXPECT_FALSE(isRegisteredAt(0));
    EXPECT_TRUE(isRegisteredAt(1));
}

TEST_F(TlsServers, ServersThatAllEndTheConnection_AreNamedByTheReason)
{
    startServer(0, certificates_.make("DNS:pbx.test"), true);
    startServer(1, certificates_.make("DNS:pbx.test"), true);
    serveBoth();
    auto const peer = phone();

    registerOverTls(*peer);

    ASSERT_TRUE(peer->waitFor("unregistered 502")) << peer->events() << log_;
    EXPECT_TRUE(peer->lastFailure.starts_with("pbx.test ")) << peer->lastFailure;
    EXPECT_TRUE(peer->lastFailure.ends_with("; it may ask for a certificate, and sip.certificate is empty"))
        << peer->lastFailure;
}

TEST_F(TlsServers, ServerThatGoesAway_LeavesTheLineToTheNext)
{
    startServer(0, certificates_.make("DNS:pbx.test"));
    startServer(1, certificates_.make("DNS:pbx.test"));
    serveBoth();
    auto const peer = phone();
    registerOverTls(*peer);
    ASSERT_TRUE(peer->waitFor("registered 3600")) << peer->events() << log_;
    ASSERT_TRUE(isRegisteredAt(0));

    servers_[0].reset();

    ASSERT_TRUE(peer->waitFor("registered 3600")) << peer->events() << log_;
    EXPECT_TRUE(isRegisteredAt(1));
}

}  // namespace telephone::test
