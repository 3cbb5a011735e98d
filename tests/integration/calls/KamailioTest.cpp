// Two telephones at a registrar and proxy of another make, with digest authentication: registration, a call through the
// proxy with hold and retrieve on its recorded route, and the registrar going away and coming back; over UDP and TLS.
#include <filesystem>
#include <fstream>

#include <unistd.h>

#include "tests/helpers/ChildProcess.h"
#include "tests/helpers/EnginePhone.h"
#include "tests/helpers/TestCertificates.h"

namespace telephone::test {

namespace {

// Between the lines that differ.
constexpr char const* kConfiguration = R"(
debug=0
log_stderror=yes
children=1
auto_aliases=no
loadmodule "tm.so"
loadmodule "sl.so"
loadmodule "rr.so"
loadmodule "pv.so"
loadmodule "maxfwd.so"
loadmodule "usrloc.so"
loadmodule "registrar.so"
loadmodule "siputils.so"
loadmodule "auth.so"
modparam("registrar", "min_expires", 1)
request_route {
    if (!mf_process_maxfwd_header("10")) {
        sl_send_reply("483", "Too Many Hops");
        exit;
    }
    if (method == "REGISTER") {
        if (!pv_www_authenticate("registrar", "secret", "0")) {
            www_challenge("registrar", "1");
            exit;
        }
        route(REGISTERED);
        save("location");
        exit;
    }
    if (!has_totag()) {
        route(INITIAL);
        loose_route();  # takes the Service-Route away
    }
    if (has_totag()) {
        if (loose_route() || (method == "ACK" && t_check_trans())) {
            t_relay();
        } else if (!method == "ACK") {
            sl_send_reply("404", "Not here");
        }
        exit;
    }
    if (method == "CANCEL") {
        if (t_check_trans()) {
            t_relay();
        }
        exit;
    }
    t_check_trans();
    record_route();
    if (!lookup("location")) {
        sl_send_reply("404", "Not Found");
        exit;
    }
    t_relay();
}
)";

constexpr char const* kUdp = "disable_tcp=yes\n";
constexpr char const* kUdpRoutes = R"(
route[INITIAL] {
    return;
}
route[REGISTERED] {
    return;
}
)";

// A connection serves requests in both directions: the telephones need no certificate.
constexpr char const* kTls = R"(
enable_tls=yes
tcp_accept_aliases=yes
loadmodule "@MODULE@"
modparam("tls", "tls_method", "TLSv1.2+")
modparam("tls", "certificate", "@CERTIFICATE@")
modparam("tls", "private_key", "@KEY@")
loadmodule "textops.so"
)";
// It takes calls by the Service-Route that it names, and by no other way.
constexpr char const* kTlsRoutes = R"(
route[INITIAL] {
    if (method == "INVITE" && $hdr(Route) != "<sip:127.0.0.1:@PORT@;transport=tls;lr>") {
        sl_send_reply("403", "Not by the Service-Route");
        exit;
    }
}
route[REGISTERED] {
    force_tcp_alias();
    append_to_reply("Service-Route: <sip:127.0.0.1:@PORT@;transport=tls;lr>\r\n");
}
)";

std::string replaced(std::string text, std::string const& what, std::string const& by)
{
    auto const place = text.find(what);
    return place == std::string::npos ? text : text.replace(place, what.size(), by);
}

class Kamailio : public ::testing::Test
{
protected:
    std::filesystem::path const folder_ =
        std::filesystem::temp_directory_path() / ("registrar-" + std::to_string(::getpid()));
    int const port_ = freeUdpPort();
    std::unique_ptr<ChildProcess> server_;

    void SetUp() override
    {
        std::filesystem::create_directories(folder_);
        start("udp", kUdp, kUdpRoutes);
    }

    void TearDown() override
    {
        server_.reset();
        std::filesystem::remove_all(folder_);
    }

    void start(std::string const& transport, std::string const& head, std::string const& routes)
    {
        std::ofstream(folder_ / "registrar.cfg") << head << kConfiguration << routes;
        start(transport);
    }
    void start(std::string const& transport = "udp")
    {
        std::string const address = transport + ":127.0.0.1:" + std::to_string(port_);
        server_ = std::make_unique<ChildProcess>(
            "kamailio",
            std::vector<std::string>{"-f", folder_ / "registrar.cfg", "-DD", "-E", "-m", "64", "-M", "8", "-l", address,
                                     "-Y", folder_, "-P", folder_ / "registrar.pid", "-w", folder_},
            folder_);
    }

    EnginePhone::Options phoneAt(std::string const& line) const
    {
        EnginePhone::Options options;
        options.lines = {line};
        options.registrar = "127.0.0.1:" + std::to_string(port_);
        return options;
    }

    static bool isRegistered(EnginePhone& phone)
    {
        return eventually([&phone] { return phone.engine().registrations().isRegistered(1); },
                          std::chrono::seconds(20));
    }
    // Each hears of the other and of each step.
    static void callHoldAndClear(EnginePhone& alice, EnginePhone& bob)
    {
        ASSERT_TRUE(isRegistered(alice));
        ASSERT_TRUE(isRegistered(bob));
        ASSERT_TRUE(alice.engine().outgoing().make(1, 0, 1, "4722"));
        ASSERT_TRUE(bob.events().waitFor("state 4722 1001 ringing normal 4711"));
        ASSERT_TRUE(bob.engine().answer(1001));
        ASSERT_TRUE(alice.events().waitFor("state 4711 1 connected normal 4722"));
        ASSERT_TRUE(alice.engine().established().hold(1));
        ASSERT_TRUE(alice.events().waitFor("held 4711 1"));
        EXPECT_TRUE(bob.events().waitFor("state 4722 1001 remotely held normal 4711"));
        ASSERT_TRUE(alice.engine().established().retrieve(1));
        EXPECT_TRUE(bob.events().waitFor("state 4722 1001 connected normal 4711"));
        ASSERT_TRUE(bob.engine().clear(1001));

        EXPECT_TRUE(alice.events().waitFor("state 4711 1 idle normal 4722"));
    }
};

// The same over TLS, where the registrar names itself as the route.
class KamailioTls : public Kamailio
{
protected:
    TestCertificates certificates_;

    void SetUp() override { std::filesystem::create_directories(folder_); }

    void startWith(TestCertificates::Files const& own)
    {
        std::string head = replaced(kTls, "@MODULE@", KAMAILIO_TLS_MODULE);
        head = replaced(replaced(head, "@CERTIFICATE@", own.certificate), "@KEY@", own.key);
        std::string const port = std::to_string(port_);
        start("tls", head, replaced(replaced(kTlsRoutes, "@PORT@", port), "@PORT@", port));
    }
    EnginePhone::Options phoneAt(std::string const& line) const
    {
        EnginePhone::Options options = Kamailio::phoneAt(line);
        options.transport = sip::Transport::kTls;
        options.engine.agent.tls =
            sip::TlsConfig{{}, {}, [file = certificates_.authorities()](std::string const&) { return file; }};
        return options;
    }
};

}  // namespace

TEST_F(Kamailio, CallThroughTheProxy_IsMadeHeldRetrievedAndCleared)
{
    EnginePhone alice(phoneAt("4711"));
    EnginePhone bob(phoneAt("4722"));
    callHoldAndClear(alice, bob);
}

TEST_F(KamailioTls, CallThroughTheProxy_IsMadeHeldRetrievedAndCleared)
{
    startWith(certificates_.make());
    EnginePhone alice(phoneAt("4711"));
    EnginePhone bob(phoneAt("4722"));
    callHoldAndClear(alice, bob);
}

TEST_F(KamailioTls, CertificateForAnotherName_IsRefused)
{
    startWith(certificates_.make("DNS:other.example"));
    EnginePhone alice(phoneAt("4711"));

    ASSERT_TRUE(alice.events().waitFor("registration 4711 0 no 2"));
    auto const called = alice.engine().outgoing().make(1, 0, 1, "4722");
    ASSERT_FALSE(called);
    EXPECT_EQ(called.error().reason, "the certificate of 127.0.0.1 is for other.example");
}

TEST_F(KamailioTls, RegistrarThatGoesAwayAndReturns_IsFoundAgainBeforeTheRefresh)
{
    startWith(certificates_.make());
    EnginePhone alice(phoneAt("4711"));
    ASSERT_TRUE(isRegistered(alice));

    server_.reset();
    EXPECT_TRUE(eventually([&alice] { return !alice.engine().registrations().isRegistered(1); }));
    start("tls");

    EXPECT_TRUE(isRegistered(alice));
}

TEST_F(Kamailio, WrongPassword_IsRefused)
{
    EnginePhone alice(phoneAt("4711"));
    ASSERT_TRUE(isRegistered(alice));
    EnginePhone::Options options = phoneAt("4722");
    options.password = "wrong";

    EnginePhone bob(options);

    bob.expect({"registration 4722 0 no 1"});
    ASSERT_TRUE(alice.engine().outgoing().make(1, 0, 1, "4722"));
    EXPECT_TRUE(alice.events().waitFor("state 4711 1 failed not found 4722"));
}

TEST_F(Kamailio, RegistrarThatGoesAwayAndReturns_IsFoundAgain)
{
    EnginePhone::Options options = phoneAt("4711");
    options.expires = 2;
    EnginePhone alice(options);
    ASSERT_TRUE(isRegistered(alice));

    server_.reset();
    EXPECT_TRUE(
        eventually([&alice] { return !alice.engine().registrations().isRegistered(1); }, std::chrono::seconds(20)));
    start();

    EXPECT_TRUE(isRegistered(alice));
    EXPECT_TRUE(alice.events().waitFor("registration 4711 0 yes 0"));
    EXPECT_TRUE(alice.events().waitFor("registration 4711 0 no 3"));
    EXPECT_TRUE(alice.events().waitFor("registration 4711 0 yes 0"));
}

}  // namespace telephone::test
