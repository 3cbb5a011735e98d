// The panel over HTTP: how a browser is admitted, and what it is given.
#include <gmock/gmock.h>

#include "HttpTest.h"

using testing::HasSubstr;

namespace {

class HttpPanelTest : public HttpTest
{
protected:
    // What a browser gets that was admitted before.
    HttpAnswer browse(std::string const& path, std::string const& cookie)
    {
        return answerTo("GET " + path + " HTTP/1.1\r\nHost: " + host() + "\r\nCookie: " + cookie + "\r\n\r\n");
    }

    static std::string cookieOf(HttpAnswer const& answer)
    {
        std::string const name = "Set-Cookie: ";
        auto const at = answer.header.find(name) + name.size();
        return answer.header.substr(at, answer.header.find(';', at) - at);
    }

    HttpAnswer enter() { return answerTo("GET /panel?token=" + token_ + " HTTP/1.1\r\nHost: " + host() + "\r\n\r\n"); }
};

TEST_F(HttpPanelTest, Panel_WithTheTokenInTheAddress_SetsACookieAndLeadsToTheAddressWithoutIt)
{
    HttpAnswer const answer = enter();

    EXPECT_EQ(answer.status, 303);
    EXPECT_THAT(answer.header, HasSubstr("Location: /panel\r\n"));
    EXPECT_THAT(answer.header, HasSubstr("; HttpOnly; SameSite=Strict"));
}

TEST_F(HttpPanelTest, Panel_WithTheCookie_IsThePage)
{
    HttpAnswer const page = browse("/panel", cookieOf(enter()));

    EXPECT_EQ(page.status, 200);
    EXPECT_THAT(page.header, HasSubstr("Content-Type: text/html; charset=utf-8"));
    EXPECT_THAT(page.header,
                HasSubstr("Content-Security-Policy: default-src 'none'; script-src 'self'; style-src 'self'; "
                          "img-src 'self'; connect-src 'self'; base-uri 'none'; form-action 'none'; "
                          "frame-ancestors 'none'"));
    EXPECT_EQ(page.body.find("<!doctype html>"), 0U);
}

TEST_F(HttpPanelTest, Panel_WithoutTokenAndCookie_IsRefused)
{
    EXPECT_EQ(browse("/panel", "a=b").status, 401);
    EXPECT_EQ(browse("/panel/panel.js", "a=b").status, 401);
}

TEST_F(HttpPanelTest, Cookie_OfAnEarlierStart_StillAdmits)
{
    std::string const cookie = cookieOf(enter());
    server_.reset();
    open();
    std::string const port = std::to_string(server_->port());

    EXPECT_EQ(browse("/state", "telephone-" + port + cookie.substr(cookie.find('='))).status, 200);
}

TEST_F(HttpPanelTest, File_HasItsType)
{
    EXPECT_THAT(get("/panel/panel.js").header, HasSubstr("Content-Type: text/javascript; charset=utf-8"));
    EXPECT_THAT(get("/panel/panel.css").header, HasSubstr("Content-Type: text/css; charset=utf-8"));
    EXPECT_THAT(get("/panel/icon.svg").header, HasSubstr("Content-Type: image/svg+xml"));
}

TEST_F(HttpPanelTest, File_ThatDoesNotExist_IsRefused)
{
    HttpAnswer const answer = get("/panel/other.js");

    EXPECT_EQ(answer.status, 404);
    EXPECT_EQ(answer.body, "{\"error\":\"the panel has no file \\\"other.js\\\"\"}\n");
    EXPECT_EQ(get("/panel/folder/panel.js").status, 404);
    EXPECT_EQ(get("/panel/").status, 404);
}

}  // namespace
