#include "telephone/http/HttpGuard.h"

#include <algorithm>
#include <chrono>

#include <httplib.h>
#include <spdlog/fmt/fmt.h>

#include "telephone/access/Words.h"
#include "telephone/base/Names.h"
#include "telephone/http/AccessToken.h"

namespace telephone {

namespace {

constexpr std::string_view kBearer = "Bearer ";

}  // namespace

HttpGuard::HttpGuard(std::string const& host, int port, bool isSecure, AccessToken const& token,
                     AccessToken const& browsers)
    : scheme_(isSecure ? "https" : "http")
    , port_(port)
    , hosts_({hostHeader(host), hostHeader("localhost")})
    , origin_(scheme_ + "://" + hosts_.front())
    , token_(token)
    , browsers_(browsers)
{}

std::string HttpGuard::hostHeader(std::string const& host) const
{
    bool const isStandardPort = port_ == (scheme_ == "https" ? 443 : 80);
    std::string const name = host.find(':') == std::string::npos ? host : "[" + host + "]";
    return isStandardPort ? name : fmt::format("{}:{}", name, port_);
}

bool HttpGuard::isOwnHost(httplib::Request const& request) const
{
    std::string const host = request.get_header_value("Host");
    return request.get_header_value_count("Host") == 1 &&
           (equalIgnoringCase(host, hostHeader(request.local_addr)) ||
            std::any_of(hosts_.begin(), hosts_.end(),
                        [&host](std::string const& each) { return equalIgnoringCase(host, each); }));
}

bool HttpGuard::hasToken(httplib::Request const& request) const
{
    std::string const header = request.get_header_value("Authorization");
    return beginsIgnoringCase(header, kBearer) ? token_.matches(std::string_view(header).substr(kBearer.size()))
                                               : token_.matches(request.get_param_value("token"));
}

std::string HttpGuard::cookieName() const
{
    return fmt::format("telephone-{}", port_);
}

std::string HttpGuard::cookie() const
{
    constexpr std::chrono::seconds kYear{365 * 24 * 3600};
    return fmt::format("{}={}; Path=/; Max-Age={}; HttpOnly; SameSite=Strict{}", cookieName(), browsers_.text(),
                       kYear.count(), scheme_ == "https" ? "; Secure" : "");
}

bool HttpGuard::followsLink(httplib::Request const& request)
{
    return request.method == "GET" && request.get_header_value("Sec-Fetch-Site") == "same-site" &&
           request.get_header_value("Sec-Fetch-Mode") == "navigate" &&
           request.get_header_value("Sec-Fetch-Dest") == "document";
}

bool HttpGuard::hasCookie(httplib::Request const& request) const
{
    std::string const site = request.get_header_value("Sec-Fetch-Site");
    if (!site.empty() && site != "same-origin" && site != "none" && !followsLink(request)) {
        return false;
    }
    std::string const header = request.get_header_value("Cookie");
    std::string const beginning = cookieName() + "=";
    for (std::size_t at = 0; at < header.size();) {
        std::size_t const end = std::min(header.find(';', at), header.size());
        std::string_view const each = trimmed(std::string_view(header).substr(at, end - at));
        if (each.starts_with(beginning) && browsers_.matches(each.substr(beginning.size()))) {
            return true;
        }
        at = end + 1;
    }
    return false;
}

std::optional<HttpRefusal> HttpGuard::check(httplib::Request const& request) const
{
    if (!isOwnHost(request)) {
        return HttpRefusal{403, "the header Host does not name this telephone: use " + origin_};
    }
    std::string const own = scheme_ + "://" + request.get_header_value("Host");
    if (request.has_header("Origin") && !equalIgnoringCase(request.get_header_value("Origin"), own)) {
        return HttpRefusal{403, "pages of other origins have no access"};
    }
    if (!hasToken(request) && !hasCookie(request)) {
        return HttpRefusal{401,
                           "the token is missing or wrong: send \"Authorization: Bearer TOKEN\", or add ?token=TOKEN "
                           "to the address; the telephone has printed it at its start"};
    }
    return std::nullopt;
}

}  // namespace telephone
