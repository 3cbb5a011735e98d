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

    // The same for a browser that presents a cookie, as a page of this site or of another.
    static int statusOfCookie(HttpGuard const& guard, std::string const& cookie, std::string const& site)
    {
        httplib::Request request;
        request.headers = {{"Host", "desk:8080"}, {"Cookie", cookie}};
        if (!site.empty()) {
            request.headers.emplace("Sec-Fetch-Site", site);
        }
        auto const refusal = guard.check(request);
        return refusal ? refusal->status : 0;
    }

    TemporaryFolder folder_;
    AccessToken const token_ = AccessToken::create(folder_.file("token")).value();
    AccessToken const browsers_ = AccessToken::keep(folder_.file("browsers")).value();
};

TEST_F(HttpGuardTest, Port_IsPartOfTheHostUnlessItIsThatOfTheScheme)
{
    EXPECT_EQ(HttpGuard("127.0.0.1", 8080, false, token_, browsers_).origin(), "http://127.0.0.1:8080");
    EXPECT_EQ(HttpGuard("127.0.0.1", 80, false, token_, browsers_).origin(), "http://127.0.0.1");
    EXPECT_EQ(HttpGuard("127.0.0.1", 443, false, token_, browsers_).origin(), "http://127.0.0.1:443");
    EXPECT_EQ(HttpGuard("desk", 443, true, token_, browsers_).origin(), "https://desk");
    EXPECT_EQ(HttpGuard("desk", 80, true, token_, browsers_).origin(), "https://desk:80");
    EXPECT_EQ(HttpGuard("::1", 8080, false, token_, browsers_).origin(), "http://[::1]:8080");
}

TEST_F(HttpGuardTest, Hosts_AreTheConfiguredOneTheLocalOneAndTheAddressOfTheConnection)
{
    HttpGuard const guard("desk", 8080, false, token_, browsers_);

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
    HttpGuard const guard("desk", 8080, false, token_, browsers_);

    EXPECT_EQ(statusOf(guard, "desk:8080", "http://desk:8080"), 0);
    EXPECT_EQ(statusOf(guard, "desk:8080", "HTTP://DESK:8080"), 0);
    EXPECT_EQ(statusOf(guard, "desk:8080", "https://desk:8080"), 403);
    EXPECT_EQ(statusOf(guard, "desk:8080", "http://localhost:8080"), 403);
}

TEST_F(HttpGuardTest, Cookie_AdmitsWhoFollowsALinkFromAPageAtAnotherPort)
{
    HttpGuard const guard("desk", 8080, false, token_, browsers_);
    httplib::Request request;
    request.method = "GET";
    request.headers = {{"Host", "desk:8080"},
                       {"Cookie", "telephone-8080=" + browsers_.text()},
                       {"Sec-Fetch-Site", "same-site"},
                       {"Sec-Fetch-Mode", "navigate"},
                       {"Sec-Fetch-Dest", "document"}};
    auto const with = [&request](char const* name, char const* value) {
        httplib::Request changed = request;
        changed.headers.erase(name);
        changed.headers.emplace(name, value);
        return changed;
    };
    httplib::Request sent = request;
    sent.method = "POST";

    EXPECT_FALSE(guard.check(request));
    EXPECT_TRUE(guard.check(with("Sec-Fetch-Dest", "iframe")));
    EXPECT_TRUE(guard.check(with("Sec-Fetch-Mode", "no-cors")));
    EXPECT_TRUE(guard.check(with("Sec-Fetch-Site", "cross-site")));
    EXPECT_TRUE(guard.check(sent));
}

TEST_F(HttpGuardTest, Cookie_OfTheBrowsersTokenAdmits)
{
    HttpGuard const guard("desk", 8080, false, token_, browsers_);

    EXPECT_EQ(statusOfCookie(guard, "telephone-8080=" + browsers_.text(), "same-origin"), 0);
    EXPECT_EQ(statusOfCookie(guard, "a=b; telephone-8080=" + browsers_.text() + "; c", ""), 0);
    EXPECT_EQ(statusOfCookie(guard, "telephone-8080=" + token_.text(), ""), 401);
    EXPECT_EQ(statusOfCookie(guard, "telephone-8081=" + browsers_.text(), ""), 401);
    EXPECT_EQ(statusOfCookie(guard, "telephone-8080=", ""), 401);
    EXPECT_EQ(statusOfCookie(guard, "", ""), 401);
}

TEST_F(HttpGuardTest, Cookie_WithARequestOfAnotherPage_DoesNotAdmit)
{
    HttpGuard const guard("desk", 8080, false, token_, browsers_);
    std::string const cookie = "telephone-8080=" + browsers_.text();

    EXPECT_EQ(statusOfCookie(guard, cookie, "none"), 0);
    EXPECT_EQ(statusOfCookie(guard, cookie, "same-site"), 401);
    EXPECT_EQ(statusOfCookie(guard, cookie, "cross-site"), 401);
}

TEST_F(HttpGuardTest, Cookie_IsHiddenFromScriptsAndOtherSites)
{
    EXPECT_EQ(HttpGuard("desk", 8080, false, token_, browsers_).cookie(),
              "telephone-8080=" + browsers_.text() + "; Path=/; Max-Age=31536000; HttpOnly; SameSite=Strict");
    EXPECT_EQ(HttpGuard("desk", 443, true, token_, browsers_).cookie(),
              "telephone-443=" + browsers_.text() + "; Path=/; Max-Age=31536000; HttpOnly; SameSite=Strict; Secure");
}

}  // namespace
