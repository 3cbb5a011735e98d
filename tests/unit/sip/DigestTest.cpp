#include "telephone/sip/Digest.h"

#include <gtest/gtest.h>

namespace telephone::sip {

namespace {

using Verdict = DigestServer::Verdict;

std::optional<std::string> passwordOf(std::string const& user)
{
    return user == "4711" ? std::optional<std::string>("secret") : std::nullopt;
}

std::string credentials(std::string const& nonce, std::string const& response)
{
    return "Digest username=\"4711\", realm=\"pbx\", nonce=\"" + nonce + "\", uri=\"sip:pbx\", response=\"" + response +
           "\"";
}

}  // namespace

TEST(Digest, Challenge_NamesTheRealmAndANewNonceEachTime)
{
    DigestServer const server("pbx");

    std::string const first = server.challenge();

    EXPECT_EQ(0U, first.find("Digest realm=\"pbx\", nonce=\""));
    EXPECT_NE(std::string::npos, first.find("qop=\"auth\", algorithm=MD5"));
    EXPECT_EQ(std::string::npos, first.find("stale"));
    EXPECT_NE(first, server.challenge());
    EXPECT_NE(std::string::npos, server.challenge(true).find("stale=true"));
}

TEST(Digest, NothingOrAnotherRealm_IsNoCredentials)
{
    DigestServer const server("pbx");

    EXPECT_EQ(Verdict::kNoCredentials, server.judge("REGISTER", "", passwordOf).verdict);
    EXPECT_EQ(Verdict::kNoCredentials, server.judge("REGISTER", "Basic abc", passwordOf).verdict);
    EXPECT_EQ(Verdict::kNoCredentials,
              server
                  .judge("REGISTER", "Digest username=\"4711\", realm=\"x\", nonce=\"n\", uri=\"u\", response=\"r\"",
                         passwordOf)
                  .verdict);
}

// MD5 of "4711:pbx:secret", ":someNonce:", MD5 of "REGISTER:sip:pbx", worked out with the md5sum command.
TEST(Digest, RightAnswerToANonceThatIsNotOurs_IsStale)
{
    DigestServer const server("pbx");

    auto const result =
        server.judge("REGISTER", credentials("someNonce", "d5cb5629ec43959d1312087c347b62b3"), passwordOf);

    EXPECT_EQ(Verdict::kStale, result.verdict);
    EXPECT_EQ("4711", result.user);
}

TEST(Digest, WrongAnswer_IsWrong)
{
    DigestServer const server("pbx");

    EXPECT_EQ(
        Verdict::kWrong,
        server.judge("REGISTER", credentials("someNonce", "00000000000000000000000000000000"), passwordOf).verdict);
}

}  // namespace telephone::sip
