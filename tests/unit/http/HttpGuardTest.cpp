// The names by which a telephone is addressed, as its guard accepts and prints them.
#include "telephone/http/HttpGuard.h"

#include <gtest/gtest.h>
#include <httplib.h>

#include "telephone/http/AccessToken.h"
#include "tests/doubles/TemporaryFolder.h"

using namespace telephone;

namespace {

class HttpGuardTest : public testing::Test
{
protected:
    // The status with which a request to this Host is refused; 0 if it is admitted.
    int statusOf(HttpGuard const& guard, std::string const& host, std::string const& origin = {}) const
    {
        httplib::Request request;
        request.local_addr = "192.0.2.7";
        request.headers = {{"Host", host}, {"Authorization", "bearer " + token_.text()}};
        if (!origin.empty()) {
            request.headers.emplace("Origin", origin);
        }
        auto const refusal = guard.check(request);
        return refusal ? refusal->status : 0;
    }

    TemporaryFolder folder_;
    AccessToken const token_ = AccessToken::create(folder_.file("token")).value();
};

TEST_F(HttpGuardTest, Port_IsPartOfTheHostUnlessItIsThatOfTheScheme)
{
    EXPECT_EQ(HttpGuard("127.0.0.1", 8080, false, token_).origin(), "http://127.0.0.1:8080");
    EXPECT_EQ(HttpGuard("127.0.0.1", 80, false, token_).origin(), "http://127.0.0.1");
    EXPECT_EQ(HttpGuard("127.0.0.1", 443, false, token_).origin(), "http://127.0.0.1:443");
    EXPECT_EQ(HttpGuard("desk", 443, true, token_).origin(), "https://desk");
    EXPECT_EQ(HttpGuard("desk", 80, true, token_).origin(), "https://desk:80");
    EXPECT_EQ(HttpGuard("::1", 8080, false, token_).origin(), "http://[::1]:8080");
}

TEST_F(HttpGuardTest, Hosts_AreTheConfiguredOneTheLocalOneAndTheAddressOfTheConnection)
{
    HttpGuard const guard("desk", 8080, false, token_);

    EXPECT_EQ(statusOf(guard, "desk:8080"), 0);
    EXPECT_EQ(statusOf(guard, "DESK:8080"), 0);
    EXPECT_EQ(statusOf(guard, "localhost:8080"), 0);
    EXPECT_EQ(statusOf(guard, "192.0.2.7:8080"), 0);
    EXPECT_EQ(statusOf(guard, "desk"), 403);
    EXPECT_EQ(statusOf(guard, "other:8080"), 403);
    EXPECT_EQ(statusOf(guard, ""), 403);
}

TEST_F(HttpGuardTest, Origin_MustBeTheHostOfTheRequest)
{
    HttpGuard const guard("desk", 8080, false, token_);

    EXPECT_EQ(statusOf(guard, "desk:8080", "http://desk:8080"), 0);
    EXPECT_EQ(statusOf(guard, "desk:8080", "HTTP://DESK:8080"), 0);
    EXPECT_EQ(statusOf(guard, "desk:8080", "https://desk:8080"), 403);
    EXPECT_EQ(statusOf(guard, "desk:8080", "http://localhost:8080"), 403);
}

}  // namespace
