#include "telephone/sip/Digest.h"

#include <gtest/gtest.h>

#include "telephone/time/VirtualTime.h"
#include "telephone/time/Waiting.h"

namespace telephone::sip {

namespace {

using Verdict = DigestServer::Verdict;

std::optional<std::string> passwordOf(std::string const& user)
{
    return user == "4711" ? std::optional<std::string>("secret") : std::nullopt;
}

Headers authorization(std::string const& value)
{
    return {{"Authorization", value}};
}

Headers credentials(std::string const& nonce, std::string const& response, std::string const& more = {})
{
    return authorization("Digest username=\"4711\", realm=\"pbx\", nonce=\"" + nonce +
                         "\", uri=\"sip:pbx\", response=\"" + response + "\"" + more);
}

std::string nonceOf(Headers const& challenges)
{
    return DigestFields::parse(challenges.value("WWW-Authenticate"))->value("nonce");
}

// What a client answers to a challenge. The calculation itself is compared with literal responses below.
Headers answer(std::string const& nonce, std::string const& count)
{
    std::string const response =
        digestResponse({DigestAlgorithm::kSha256, "4711", "pbx", "secret", "REGISTER", "sip:pbx", nonce, "abc", count});
    return credentials(nonce, response, ", algorithm=SHA-256, qop=auth, cnonce=\"abc\", nc=" + count);
}

DigestServer strictServer()
{
    return {"pbx", {DigestAlgorithm::kSha256, DigestAlgorithm::kMd5}};
}

DigestInput exampleOf(DigestAlgorithm algorithm)
{
    return {algorithm,
            "Mufasa",
            "http-auth@example.org",
            "Circle of Life",
            "GET",
            "/dir/index.html",
            "7ypf/xlj9XXwfDPEoM4URrv/xwf94BcCAzFZH4GiTo0v",
            "f2/wE4q74E6zIJEtWaHKaf5wv/H5QzzpXusqGemxURZJ",
            "00000001"};
}

}  // namespace

// The example of RFC 7616 section 3.9.1; for the algorithms of a session, worked out with openssl dgst.
TEST(Digest, Response_IsThatOfTheStandard)
{
    EXPECT_EQ("8ca523f5e9506fed4657c9700eebdbec", digestResponse(exampleOf(DigestAlgorithm::kMd5)));
    EXPECT_EQ("753927fa0e85d155564e2e272a28d1802ca10daf4496794697cf8db5856cb6c1",
              digestResponse(exampleOf(DigestAlgorithm::kSha256)));
    EXPECT_EQ("e783283f46242139c486a698fec7211d", digestResponse(exampleOf(DigestAlgorithm::kMd5Session)));
    EXPECT_EQ("2fd51b3a77ad75bad6afad6003e818d767133c46d9e2749e7f5232ae1ea3efd7",
              digestResponse(exampleOf(DigestAlgorithm::kSha256Session)));
}

TEST(Digest, Algorithm_IsKnownByItsName)
{
    EXPECT_EQ(DigestAlgorithm::kMd5, digestAlgorithmOf(""));
    EXPECT_EQ(DigestAlgorithm::kMd5Session, digestAlgorithmOf("md5-sess"));
    EXPECT_EQ(DigestAlgorithm::kSha256Session, digestAlgorithmOf("SHA-256-sess"));
    EXPECT_EQ(std::nullopt, digestAlgorithmOf("SHA-512-256"));
}

TEST(Digest, FieldsOfAChallenge_AreReadWithTheirCommasAndEscapes)
{
    auto const fields = DigestFields::parse(R"(digest realm="a, \"b\"",nonce=n , QOP="auth-int, auth")");

    ASSERT_TRUE(fields);
    EXPECT_EQ(R"(a, \"b\")", fields->value("Realm"));
    EXPECT_EQ("n", fields->value("nonce"));
    EXPECT_TRUE(fields->offersAuth());
    EXPECT_FALSE(DigestFields::parse("Digest qop=\"auth-int\"")->offersAuth());
    EXPECT_FALSE(DigestFields::parse("Basic realm=\"a\""));
    EXPECT_FALSE(DigestFields::parse("Digest realm"));
}

TEST(Digest, Challenges_OfferEachAlgorithmInOrderWithANewNonceEachTime)
{
    auto const server = strictServer();

    auto const first = server.challenges().values("WWW-Authenticate");

    ASSERT_EQ(2U, first.size());
    EXPECT_EQ(0U, first[0].find("Digest realm=\"pbx\", nonce=\""));
    EXPECT_NE(std::string::npos, first[0].find("qop=\"auth\", algorithm=SHA-256"));
    EXPECT_NE(std::string::npos, first[1].find("qop=\"auth\", algorithm=MD5"));
    EXPECT_EQ(std::string::npos, first[0].find("stale"));
    EXPECT_NE(first, server.challenges().values("WWW-Authenticate"));
    EXPECT_NE(std::string::npos, server.challenges(true).value("WWW-Authenticate").find("stale=true"));
}

TEST(Digest, NothingOrAnotherRealm_IsNoCredentials)
{
    auto server = strictServer();

    EXPECT_EQ(Verdict::kNoCredentials, server.judge("REGISTER", {}, passwordOf).verdict);
    EXPECT_EQ(Verdict::kNoCredentials, server.judge("REGISTER", authorization("Basic abc"), passwordOf).verdict);
    EXPECT_EQ(Verdict::kNoCredentials,
              server
                  .judge("REGISTER",
                         authorization("Digest username=\"4711\", realm=\"x\", nonce=\"n\", uri=\"u\", response=\"r\""),
                         passwordOf)
                  .verdict);
}

// MD5 and SHA-256 of "4711:pbx:secret", ":someNonce:", hash of "REGISTER:sip:pbx", worked out with openssl dgst.
TEST(Digest, RightAnswerToANonceThatIsNotOurs_IsStale)
{
    auto server = strictServer();

    auto const result =
        server.judge("REGISTER", credentials("someNonce", "d5cb5629ec43959d1312087c347b62b3"), passwordOf);

    EXPECT_EQ(Verdict::kStale, result.verdict);
    EXPECT_EQ("4711", result.user);
    EXPECT_EQ(Verdict::kStale,
              server
                  .judge("REGISTER",
                         credentials("someNonce", "99fdaf9c6616f940c25f1bf6fe3908be524c240d7cc9067e6c33d65d9d258d1b",
                                     ", algorithm=SHA-256"),
                         passwordOf)
                  .verdict);
}

TEST(Digest, WrongAnswer_IsWrong)
{
    auto server = strictServer();

    EXPECT_EQ(
        Verdict::kWrong,
        server.judge("REGISTER", credentials("someNonce", "00000000000000000000000000000000"), passwordOf).verdict);
}

TEST(Digest, AlgorithmThatWasNotOffered_IsWrong)
{
    DigestServer server("pbx", {DigestAlgorithm::kSha256});

    EXPECT_EQ(
        Verdict::kWrong,
        server.judge("REGISTER", credentials("someNonce", "d5cb5629ec43959d1312087c347b62b3"), passwordOf).verdict);
}

TEST(Digest, SameCountAgain_IsStaleAndAHigherOneIsAccepted)
{
    auto server = strictServer();
    std::string const nonce = nonceOf(server.challenges());

    EXPECT_EQ(Verdict::kAccepted, server.judge("REGISTER", answer(nonce, "00000001"), passwordOf).verdict);
    EXPECT_EQ(Verdict::kStale, server.judge("REGISTER", answer(nonce, "00000001"), passwordOf).verdict);
    EXPECT_EQ(Verdict::kAccepted, server.judge("REGISTER", answer(nonce, "00000002"), passwordOf).verdict);
}

TEST(Digest, Count_IsHexadecimalAndOneWithoutProtection)
{
    auto server = strictServer();
    std::string const nonce = nonceOf(server.challenges());
    auto const verdictOn = [&server](Headers const& credentials) {
        return server.judge("REGISTER", credentials, passwordOf).verdict;
    };

    EXPECT_EQ(Verdict::kAccepted, verdictOn(answer(nonce, "")));
    EXPECT_EQ(Verdict::kStale, verdictOn(answer(nonce, "00000001")));
    EXPECT_EQ(Verdict::kAccepted, verdictOn(answer(nonce, "0000000a")));
    EXPECT_EQ(Verdict::kStale, verdictOn(answer(nonce, "00000009")));
    EXPECT_EQ(Verdict::kAccepted, verdictOn(answer(nonce, "00000010")));
    EXPECT_EQ(Verdict::kStale, verdictOn(answer(nonce, "0000000f")));
    EXPECT_EQ(Verdict::kStale, verdictOn(answer(nonce, "0000002x"))) << "not a number";
}

TEST(Digest, Nonce_MayBeUsedForItsLifetime)
{
    VirtualTime const time({});
    DigestServer server("pbx", {DigestAlgorithm::kSha256}, std::chrono::seconds(60));
    std::string const nonce = nonceOf(server.challenges());

    sleepFor(std::chrono::seconds(60));
    EXPECT_EQ(Verdict::kAccepted, server.judge("REGISTER", answer(nonce, "00000001"), passwordOf).verdict);
    sleepFor(std::chrono::milliseconds(1));
    EXPECT_EQ(Verdict::kStale, server.judge("REGISTER", answer(nonce, "00000002"), passwordOf).verdict);
}

TEST(Digest, NonceThatWasChanged_IsStale)
{
    auto server = strictServer();
    std::string const nonce = nonceOf(server.challenges());

    for (std::string const& forged : {"1" + nonce, nonce + "0", nonce.substr(0, nonce.find('.'))}) {
        EXPECT_EQ(Verdict::kStale, server.judge("REGISTER", answer(forged, "00000001"), passwordOf).verdict) << forged;
    }
    EXPECT_EQ(Verdict::kAccepted, server.judge("REGISTER", answer(nonce, "00000001"), passwordOf).verdict);
}

TEST(Digest, UnknownUser_IsWrong)
{
    auto server = strictServer();
    std::string const nonce = nonceOf(server.challenges());

    auto const result =
        server.judge("REGISTER", answer(nonce, "00000001"), [](std::string const&) { return std::nullopt; });

    EXPECT_EQ(Verdict::kWrong, result.verdict);
    EXPECT_EQ("4711", result.user);
}

TEST(Digest, CredentialsForOthers_ArePassedOver)
{
    auto server = strictServer();
    Headers request = authorization("Basic abc");
    request.add("Authorization", "Digest username=\"x\", realm=\"other\", nonce=\"n\", uri=\"u\", response=\"r\"");
    request.add(answer(nonceOf(server.challenges()), "00000001"));

    EXPECT_EQ(Verdict::kAccepted, server.judge("REGISTER", request, passwordOf).verdict);
}

TEST(Digest, UsesOfANonce_AreRememberedAmong999Others)
{
    VirtualTime const time({});
    auto server = strictServer();
    auto const useNext = [&server] {
        sleepFor(std::chrono::milliseconds(1));
        std::string const nonce = nonceOf(server.challenges());
        EXPECT_EQ(Verdict::kAccepted, server.judge("REGISTER", answer(nonce, "00000001"), passwordOf).verdict);
        return nonce;
    };
    std::string const first = useNext();
    std::string const second = useNext();
    for (int number = 3; number <= 999; ++number) {
        useNext();
    }
    EXPECT_EQ(Verdict::kAccepted, server.judge("REGISTER", answer(first, "00000002"), passwordOf).verdict);

    useNext();

    EXPECT_EQ(Verdict::kStale, server.judge("REGISTER", answer(first, "00000003"), passwordOf).verdict);
    EXPECT_EQ(Verdict::kAccepted, server.judge("REGISTER", answer(second, "00000002"), passwordOf).verdict);
}

// The server forgets what the oldest nonces were used for, and therefore these nonces as well.
TEST(Digest, ThousandsOfNonces_LeaveNoneThatCanBeUsedAgain)
{
    auto server = strictServer();
    std::string const first = nonceOf(server.challenges());
    ASSERT_EQ(Verdict::kAccepted, server.judge("REGISTER", answer(first, "00000001"), passwordOf).verdict);

    for (int i = 0; i < 2500; ++i) {
        (void)server.judge("REGISTER", answer(nonceOf(server.challenges()), "00000001"), passwordOf);
    }

    EXPECT_EQ(Verdict::kStale, server.judge("REGISTER", answer(first, "00000001"), passwordOf).verdict);
}

}  // namespace telephone::sip
