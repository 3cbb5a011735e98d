// Who may use the telephone over HTTP: programs that present the token, browsers with the cookie that the panel has
// set, and no page of another origin in a browser. HttpServer owns it. Constant: any thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace httplib {
struct Request;
}

namespace telephone {

class AccessToken;

// Why a request is not handled: the status and a sentence.
struct HttpRefusal
{
    int status;
    std::string reason;
};

class HttpGuard
{
public:
    // The host as configured, and the port at which the server listens; the token of programs, and that of browsers.
    HttpGuard(std::string const& host, int port, bool isSecure, AccessToken const& token, AccessToken const& browsers);

    // Nothing if the request may be handled.
    [[nodiscard]] std::optional<HttpRefusal> check(httplib::Request const& request) const;

    // The value of a header Set-Cookie that admits a browser to which the token was given. Scripts cannot read it, and
    // other sites cannot make the browser send it.
    [[nodiscard]] std::string cookie() const;

    // "http://127.0.0.1:8080"
    [[nodiscard]] std::string const& origin() const { return origin_; }

private:
    // A page that a browser loaded from another name which now leads here (DNS rebinding) says this name.
    [[nodiscard]] bool isOwnHost(httplib::Request const& request) const;
    [[nodiscard]] bool hasToken(httplib::Request const& request) const;
    // Cookies do not tell ports apart, so a page at another port of this host must not use this one.
    [[nodiscard]] bool hasCookie(httplib::Request const& request) const;
    // Whether a person follows a link from a page at another port of this host, as from the page of a fleet to that of
    // one telephone. The browser shows the answer to the person, and no page can read it.
    [[nodiscard]] static bool followsLink(httplib::Request const& request);
    [[nodiscard]] std::string cookieName() const;
    // The host as a Host header has it.
    [[nodiscard]] std::string hostHeader(std::string const& host) const;

    std::string const scheme_;
    int const port_;
    std::vector<std::string> hosts_;  // permitted Host headers, beside the address of the connection
    std::string const origin_;
    AccessToken const& token_;
    AccessToken const& browsers_;
};

}  // namespace telephone
