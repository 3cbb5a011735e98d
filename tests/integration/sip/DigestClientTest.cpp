// How our own requests answer challenges.
#include "SipFixture.h"
#include "telephone/sip/DigestResponse.h"

namespace telephone::test {

namespace {

// A registrar that challenges the first request, and accepts the second without looking at it.
class ChallengingRegistrar final : private sip::UserAgentObserver
{
public:
    ChallengingRegistrar(sip::EventLoop& loop, std::vector<std::string> const& challenges)
        : agent_(loop, {}, *this)
    {
        for (auto const& challenge : challenges) {
            challenges_.add("WWW-Authenticate", "Digest realm=\"pbx\", nonce=\"abc\", " + challenge);
        }
    }

    std::string hostPort() const { return agent_.hostPort(); }
    // The credentials of the second request, and how many it had.
    sip::DigestFields credentials() const { return sip::DigestFields::parse(received_.at(0)).value(); }
    std::size_t count() const { return received_.size(); }

private:
    void onRequest(std::unique_ptr<sip::IncomingRequest>& request) override
    {
        received_ = request->headers().values("Authorization");
        if (received_.empty()) {
            request->reply(401, "Unauthorized", challenges_);
        } else {
            request->reply(200, "OK", {{"Contact", request->headers().value("Contact")}});
        }
        request.reset();
    }

    sip::UserAgent agent_;
    sip::Headers challenges_;
    std::vector<std::string> received_;
};

using DigestClient = SipTest;

}  // namespace

TEST_F(DigestClient, SeveralAlgorithms_TheStrongestIsAnsweredOnce)
{
    ChallengingRegistrar registrar(loop, {"algorithm=MD5, qop=\"auth\"", "algorithm=SHA-256, qop=\"auth,auth-int\"",
                                          "algorithm=SHA-512-256, qop=\"auth\""});
    SipPeer phone(loop);

    phone.registerAt(registrar.hostPort());

    ASSERT_TRUE(phone.waitFor("registered 3600")) << phone.events();
    ASSERT_EQ(1U, registrar.count());
    EXPECT_EQ("SHA-256", registrar.credentials().value("algorithm"));
    EXPECT_EQ("auth", registrar.credentials().value("qop"));
    EXPECT_EQ("00000001", registrar.credentials().value("nc"));
}

TEST_F(DigestClient, StrongestAlgorithmWithoutAuth_TheNextIsAnswered)
{
    ChallengingRegistrar registrar(loop, {"algorithm=SHA-256, qop=\"auth-int\"", "algorithm=MD5, qop=\"auth\""});
    SipPeer phone(loop);

    phone.registerAt(registrar.hostPort());

    ASSERT_TRUE(phone.waitFor("registered 3600")) << phone.events();
    EXPECT_EQ("MD5", registrar.credentials().value("algorithm"));
}

TEST_F(DigestClient, OnlyAuthInt_IsNotAnsweredAndTheLogSaysWhy)
{
    ChallengingRegistrar registrar(loop, {"qop=\"auth-int\""});
    std::string log;
    sip::UserAgentConfig config;
    config.log = [&log](sip::LogLevel, std::string const& line) { log += line + "\n"; };
    SipPeer phone(loop, "4711", config);

    phone.registerAt(registrar.hostPort());

    EXPECT_TRUE(phone.waitFor("unregistered 401")) << phone.events();
    EXPECT_EQ(0U, registrar.count());
    EXPECT_NE(std::string::npos, log.find("offers only qop \"auth-int\", which is not supported")) << log;
}

// Without an algorithm and quality of protection, as servers of RFC 2069 ask: the hash of "4711:pbx:secret", "abc" and
// the hash of "REGISTER:sip:127.0.0.1:PORT", which depends on the port.
TEST_F(DigestClient, ChallengeWithoutProtection_IsAnsweredWithoutACount)
{
    ChallengingRegistrar registrar(loop, {"opaque=\"xyz\""});
    SipPeer phone(loop);

    phone.registerAt(registrar.hostPort());

    ASSERT_TRUE(phone.waitFor("registered 3600")) << phone.events();
    EXPECT_EQ("", registrar.credentials().value("nc"));
    EXPECT_EQ("", registrar.credentials().value("algorithm"));
    EXPECT_EQ("xyz", registrar.credentials().value("opaque"));
}

class DigestAtTheExchange : public SipTest, public ::testing::WithParamInterface<sip::DigestAlgorithm>
{};

TEST_P(DigestAtTheExchange, TelephoneRegistersAndAWrongPasswordDoesNot)
{
    exchange::ExchangeConfig config;
    config.digests = {GetParam()};
    exchange::Exchange exchange(loop, config);
    SipPeer phone(loop);
    SipPeer wrong(loop, "4712");

    phone.registerAt(exchange.hostPort());
    wrong.registerAt(exchange.hostPort(), "guess");

    EXPECT_TRUE(phone.waitFor("registered 3600")) << phone.events();
    EXPECT_TRUE(wrong.waitFor("unregistered 403")) << wrong.events();
}

INSTANTIATE_TEST_SUITE_P(Algorithms, DigestAtTheExchange,
                         ::testing::Values(sip::DigestAlgorithm::kMd5, sip::DigestAlgorithm::kMd5Session,
                                           sip::DigestAlgorithm::kSha256, sip::DigestAlgorithm::kSha256Session));

// A captured request, sent again.
TEST_F(DigestClient, SameCredentialsAgain_AreRefusedByTheExchange)
{
    exchange::Exchange exchange(loop, {});
    SipPeer phone(loop);
    phone.account.domain = exchange.hostPort();
    phone.account.password.clear();
    std::string const uri = "sip:4711@" + exchange.hostPort();
    auto const ask = [&phone, &uri](sip::Headers const& headers) {
        std::optional<sip::Response> response;
        auto const done = [&response](sip::Response const& received) { response = received; };
        EXPECT_TRUE(phone.agent->request(phone.account, "REGISTER", uri, headers, {}, done));
        EXPECT_TRUE(phone.waitUntil([&response] { return response.has_value(); }));
        return response.value_or(sip::Response{});
    };
    // Requests of this kind name their target as the addressee.
    sip::DigestInput input{
        sip::DigestAlgorithm::kSha256, "4711", "exchange", "secret", "REGISTER", uri, "", "c", "00000001"};
    auto const challenge = ask({}).headers.value("WWW-Authenticate");
    input.nonce = sip::DigestFields::parse(challenge)->value("nonce");
    sip::Headers const captured{
        {"Authorization", "Digest username=\"4711\", realm=\"exchange\", nonce=\"" + input.nonce + "\", uri=\"" + uri +
                              "\", algorithm=SHA-256, cnonce=\"c\", nc=00000001, qop=auth, response=\"" +
                              sip::digestResponse(input) + "\""}};

    EXPECT_EQ(200, ask(captured).status);
    auto const second = ask(captured);

    EXPECT_EQ(401, second.status);
    EXPECT_TRUE(second.headers.value("WWW-Authenticate").ends_with("stale=true"));
}

}  // namespace telephone::test
