// Registrations and calls over TLS, and everything that makes a certificate unacceptable.
#include "SipFixture.h"
#include "tests/helpers/DnsTable.h"
#include "tests/helpers/TestCertificates.h"

namespace telephone::test {

namespace {

using Files = TestCertificates::Files;

class Tls : public SipTest
{
protected:
    sip::TlsConfig tlsOf(Files const& own = {}) const
    {
        return {own.certificate, own.key, [file = certificates_.authorities()](std::string const&) { return file; }};
    }

    // A registrar with this certificate. What it receives is kept.
    exchange::Exchange& registrarWith(Files const& own, bool asksForCertificates = false)
    {
        exchange::ExchangeConfig config;
        config.tls = tlsOf(own);
        config.tls->asksForCertificates = asksForCertificates;
        config.log = [this](sip::LogLevel, std::string const& line) { registrarLog_ += line + "\n"; };
        return registrar_.emplace(loop, config);
    }

    // A telephone; without a certificate of its own unless one is given.
    std::unique_ptr<SipPeer> phone(Files const& own = {}, std::string const& number = "4711")
    {
        sip::UserAgentConfig config;
        config.tls = tlsOf(own);
        config.tlsFromTheStart = true;
        config.traceMessages = [] { return true; };
        config.dns = names_;
        config.log = [this](sip::LogLevel, std::string const& line) { phoneLog_ += line + "\n"; };
        return std::make_unique<SipPeer>(loop, number, config);
    }

    // The server by its name.
    std::string named(std::string const& name) const
    {
        std::string const address = server();
        return name + address.substr(address.find(':'));
    }
    std::string server() const { return registrar_->hostPort(sip::Transport::kTls); }

    void registerOverTls(SipPeer& peer) const { registerOverTls(peer, server()); }
    static void registerOverTls(SipPeer& peer, std::string const& at)
    {
        peer.registerAt(at, "secret", [](sip::Account& account) { account.transport = sip::Transport::kTls; });
    }

    bool hasSent(std::string const& text) const
    {
        std::lock_guard const guard(const_cast<sip::EventLoop&>(loop));
        return phoneLog_.find(text) != std::string::npos;
    }

    TestCertificates certificates_;
    std::shared_ptr<DnsTable> names_ = std::make_shared<DnsTable>(&loop);
    std::string registrarLog_;
    std::string phoneLog_;
    std::optional<exchange::Exchange> registrar_;
};

TEST_F(Tls, GoodCertificate_LineIsRegisteredWithATlsContact)
{
    registrarWith(certificates_.make());
    auto const peer = phone();

    registerOverTls(*peer);

    EXPECT_TRUE(peer->waitFor("registered 3600")) << peer->events() << phoneLog_;
    EXPECT_EQ(contactOf(*registrar_, "4711"),
              "sip:4711@" + peer->agent->hostPort(sip::Transport::kTls) + ";line=***;transport=tls");
}

TEST_F(Tls, CallOverTls_IsEstablishedAndEnded)
{
    registrarWith(certificates_.make());
    auto const peer = phone(certificates_.make());
    registerOverTls(*peer);
    ASSERT_TRUE(peer->waitFor("registered 3600")) << peer->events() << phoneLog_;

    peer->call("sip:100@" + server());

    EXPECT_TRUE(peer->waitFor("established")) << peer->events() << phoneLog_;
    peer->session().hangUp();
    EXPECT_TRUE(peer->waitUntil([this] { return registrar_->callCount() == 0; }));
    EXPECT_FALSE(hasSent("Via: SIP/2.0/UDP")) << phoneLog_;
}

TEST_F(Tls, CallBetweenTelephones_IsEstablishedWithTheirOwnCertificates)
{
    registrarWith(certificates_.make());
    auto const caller = phone(certificates_.make());
    auto const called = phone(certificates_.make(), "4712");
    registerOverTls(*caller);
    registerOverTls(*called);
    ASSERT_TRUE(caller->waitFor("registered 3600")) << caller->events() << phoneLog_;
    ASSERT_TRUE(called->waitFor("registered 3600")) << called->events() << phoneLog_;

    caller->call("sip:4712@" + server());

    EXPECT_TRUE(caller->waitFor("established")) << caller->events() << phoneLog_;
    EXPECT_TRUE(called->waitFor("established")) << called->events();
}

// It shows nobody a certificate, so nobody can open a connection to it.
TEST_F(Tls, TelephoneWithoutACertificate_IsCalledOverTheConnectionThatItHasOpened)
{
    registrarWith(certificates_.make());
    auto const peer = phone();
    registerOverTls(*peer);
    ASSERT_TRUE(peer->waitFor("registered 3600")) << peer->events() << phoneLog_;

    ASSERT_TRUE(registrar_->callNumber("100", "4711", ""));

    EXPECT_TRUE(peer->waitFor("established")) << peer->events() << registrarLog_;
    peer->session().hangUp();
    EXPECT_TRUE(peer->waitUntil([this] { return registrar_->callCount() == 0; })) << registrarLog_;
}

TEST_F(Tls, SipsAddress_IsReachedOverTls)
{
    registrarWith(certificates_.make());
    auto const peer = phone(certificates_.make());

    peer->call("sips:100@" + server());

    EXPECT_TRUE(peer->waitFor("established")) << peer->events() << phoneLog_;
    EXPECT_TRUE(hasSent("INVITE sips:100@" + server())) << phoneLog_;
    EXPECT_TRUE(hasSent("Via: SIP/2.0/TLS")) << phoneLog_;
}

class TlsByName : public Tls
{
protected:
    TlsByName()
    {
        names_->address("pbx.example", "127.0.0.1");
        names_->address("other.example", "127.0.0.1");
    }
};

TEST_F(TlsByName, NameBeforeItsResolution_Counts)
{
    registrarWith(certificates_.make("DNS:pbx.example"));
    auto const peer = phone(certificates_.make());
    registerOverTls(*peer, named("pbx.example"));
    ASSERT_TRUE(peer->waitFor("registered 3600")) << peer->events() << phoneLog_;

    // The server's Contact is its address.
    peer->call("sip:100@" + named("pbx.example"));
    ASSERT_TRUE(peer->waitFor("established")) << peer->events() << phoneLog_;
    peer->session().hangUp();
    EXPECT_TRUE(peer->waitUntil([this] { return registrar_->callCount() == 0; }));
}

TEST_F(TlsByName, ConnectionOfOneName_CarriesNothingForAnother)
{
    registrarWith(certificates_.make("DNS:pbx.example"));
    auto const peer = phone();
    registerOverTls(*peer, named("pbx.example"));
    ASSERT_TRUE(peer->waitFor("registered 3600")) << peer->events() << phoneLog_;

    peer->call("sip:100@" + named("other.example"));

    ASSERT_TRUE(peer->waitFor("closed failed 502")) << peer->events() << phoneLog_;
    EXPECT_EQ(peer->lastClosing.text, "the certificate of other.example is for pbx.example");
    EXPECT_FALSE(hasSent("INVITE sip:")) << phoneLog_;
}

TEST_F(TlsByName, ConnectionOfOneName_CarriesWhatItsCertificateIsFor)
{
    registrarWith(certificates_.make("DNS:pbx.example,DNS:other.example"));
    auto const peer = phone(certificates_.make());
    registerOverTls(*peer, named("pbx.example"));
    ASSERT_TRUE(peer->waitFor("registered 3600")) << peer->events() << phoneLog_;

    peer->call("sip:100@" + named("other.example"));

    EXPECT_TRUE(peer->waitFor("established")) << peer->events() << phoneLog_;
}

TEST_F(TlsByName, AddressInTheCertificate_DoesNotStandForTheName)
{
    registrarWith(certificates_.make("IP:127.0.0.1"));
    auto const peer = phone();

    registerOverTls(*peer, named("pbx.example"));

    ASSERT_TRUE(peer->waitFor("unregistered 502")) << peer->events() << phoneLog_;
    EXPECT_EQ(peer->lastFailure, "the certificate of pbx.example is for 127.0.0.1");
    EXPECT_FALSE(hasSent("REGISTER sip:")) << phoneLog_;
}

struct BadCertificate
{
    char const* name;
    std::function<Files(TestCertificates&)> make;
    char const* reason;  // its beginning
};

class BadCertificates : public Tls, public ::testing::WithParamInterface<BadCertificate>
{};

TEST_P(BadCertificates, Registration_FailsWithTheReasonAndSendsNothing)
{
    registrarWith(GetParam().make(certificates_));
    auto const peer = phone();

    registerOverTls(*peer);

    ASSERT_TRUE(peer->waitFor("unregistered 502")) << peer->events() << phoneLog_;
    EXPECT_EQ(peer->lastFailure.substr(0, std::string(GetParam().reason).size()), GetParam().reason);
    EXPECT_FALSE(hasSent("REGISTER sip:")) << phoneLog_;
    EXPECT_TRUE(hasSent("TLS fails: " + std::string(GetParam().reason))) << phoneLog_;
    // A call is refused with the reason.
    sip::CallRequest request;
    request.account = peer->account;
    request.target = "sip:100@" + server();
    auto const call = peer->agent->call(request, *peer);
    ASSERT_FALSE(call);
    EXPECT_EQ(call.error().reason, peer->lastFailure);
}

TEST_P(BadCertificates, CallWithoutRegistration_EndsWithTheReason)
{
    registrarWith(GetParam().make(certificates_));
    auto const peer = phone();

    peer->call("sip:100@" + server() + ";transport=tls");

    ASSERT_TRUE(peer->waitFor("closed failed 502")) << peer->events() << phoneLog_;
    EXPECT_EQ(peer->lastClosing.text.substr(0, std::string(GetParam().reason).size()), GetParam().reason);
    EXPECT_FALSE(hasSent("INVITE sip:")) << phoneLog_;
}

INSTANTIATE_TEST_SUITE_P(
    Certificates, BadCertificates,
    ::testing::Values(
        BadCertificate{"WrongName", [](TestCertificates& from) { return from.make("DNS:other.example,IP:127.0.0.2"); },
                       "the certificate of 127.0.0.1 is for other.example and 127.0.0.2"},
        BadCertificate{"NameAsTextOnly", [](TestCertificates& from) { return from.make("DNS:127.0.0.10"); },
                       "the certificate of 127.0.0.1 is for 127.0.0.10"},
        BadCertificate{"Expired", [](TestCertificates& from) { return from.make("IP:127.0.0.1", -1); },
                       "the certificate of 127.0.0.1 expired on 20"},
        BadCertificate{"UnknownAuthority", [](TestCertificates& from) { return from.makeUntrusted(); },
                       "the certificate of 127.0.0.1 is from an unknown authority, \"Strange Authority\""},
        BadCertificate{"SelfSigned", [](TestCertificates& from) { return from.makeSelfSigned(); },
                       "the certificate of 127.0.0.1 is signed by itself and not by a trusted authority"}),
    [](auto const& each) { return each.param.name; });

TEST_F(Tls, WithoutAuthorities_NothingIsTrusted)
{
    registrarWith(certificates_.make());
    sip::UserAgentConfig config;
    config.tls = sip::TlsConfig{{}, {}, [](std::string const&) { return std::string(); }};
    SipPeer peer(loop, "4711", config);

    registerOverTls(peer);

    ASSERT_TRUE(peer.waitFor("unregistered 502")) << peer.events();
    EXPECT_EQ(peer.lastFailure, "REGISTER cannot be sent: no authority is trusted for 127.0.0.1: certificates.folder "
                                "has neither 127.0.0.1.pem nor authorities.pem");
}

TEST_F(Tls, ServerThatAsksForACertificate_AcceptsThatOfTheTelephone)
{
    registrarWith(certificates_.make(), true);
    auto const peer = phone(certificates_.make());

    registerOverTls(*peer);

    EXPECT_TRUE(peer->waitFor("registered 3600")) << peer->events() << phoneLog_;
}

TEST_F(Tls, ServerThatAsksForACertificate_RefusesATelephoneWithoutOne)
{
    registrarWith(certificates_.make(), true);
    auto const peer = phone();

    registerOverTls(*peer);

    ASSERT_TRUE(peer->waitFor("unregistered 502")) << peer->events() << phoneLog_;
    // The alert may be lost with the connection.
    EXPECT_TRUE(peer->lastFailure.starts_with("127.0.0.1 ")) << peer->lastFailure;
    EXPECT_TRUE(peer->lastFailure.ends_with("; it may ask for a certificate, and sip.certificate is empty"))
        << peer->lastFailure;
    EXPECT_FALSE(registrar_->isRegistered("4711"));
}

TEST_F(Tls, ServerWhoseCertificateIsReplaced_IsTrustedAgain)
{
    registrarWith(certificates_.make("DNS:other.example"));
    auto const port = registrar_->hostPort(sip::Transport::kTls);
    auto const peer = phone();
    peer->registerAt(port, "secret", [](sip::Account& account) {
        account.transport = sip::Transport::kTls;
        account.retryFirst = 50ms;
        account.retryMax = 50ms;
    });
    ASSERT_TRUE(peer->waitFor("unregistered 502")) << peer->events() << phoneLog_;

    registrar_.reset();
    exchange::ExchangeConfig config;
    config.tls = tlsOf(certificates_.make());
    config.tlsPort = static_cast<std::uint16_t>(std::stoi(port.substr(port.rfind(':') + 1)));
    registrar_.emplace(loop, config);

    EXPECT_TRUE(peer->waitFor("registered 3600")) << peer->events() << phoneLog_;
    peer->call("sip:100@" + server());
    EXPECT_TRUE(peer->waitFor("established")) << peer->events() << phoneLog_;
}

TEST_F(Tls, ServerThatNoLineRegistersWithAnyMore_IsCalledAgain)
{
    registrarWith(certificates_.make("DNS:other.example"));
    auto const peer = phone();
    registerOverTls(*peer);
    ASSERT_TRUE(peer->waitFor("unregistered 502")) << peer->events() << phoneLog_;
    sip::CallRequest request;
    request.account = peer->account;
    request.target = "sip:100@" + server();
    auto const refused = peer->agent->call(request, *peer);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error(), (Refusal{RefusalKind::kUnavailable, peer->lastFailure}));

    peer->registration.reset();

    EXPECT_TRUE(peer->agent->call(request, *peer)) << "whether it may be trusted is asked anew";
}

TEST_F(Tls, ServerWithoutACertificate_IsNamed)
{
    registrarWith({});
    auto const peer = phone();

    registerOverTls(*peer);

    ASSERT_TRUE(peer->waitFor("unregistered 502")) << peer->events() << phoneLog_;
    EXPECT_EQ(peer->lastFailure, "127.0.0.1 refuses the connection: handshake failure");
}

TEST_F(Tls, ServerThatIsNotThere_IsNotReachable)
{
    registrarWith(certificates_.make());
    std::string const gone = server();
    registrar_.reset();
    auto const peer = phone();

    peer->registerAt(gone, "secret", [](sip::Account& account) { account.transport = sip::Transport::kTls; });

    ASSERT_TRUE(peer->waitFor("unregistered 503")) << peer->events() << phoneLog_;
    EXPECT_EQ(peer->lastFailure, "Connection refused");
}

TEST_F(Tls, CertificateThatCannotBeRead_IsNamed)
{
    try {
        phone({"/nowhere/own.pem", "/nowhere/own.key"});
        FAIL() << "it starts";
    } catch (std::runtime_error const& error) {
        EXPECT_EQ(std::string(error.what()),
                  "the certificate /nowhere/own.pem cannot be used: No such file or directory");
    }
}

TEST_F(Tls, KeyOfAnotherCertificate_IsNamed)
{
    auto const one = certificates_.make();
    auto const other = certificates_.make();
    try {
        phone({one.certificate, other.key});
        FAIL() << "it starts";
    } catch (std::runtime_error const& error) {
        EXPECT_EQ(std::string(error.what()), "the key " + other.key + " cannot be used for the certificate " +
                                                 one.certificate + ": key values mismatch");
    }
}

}  // namespace
}  // namespace telephone::test
