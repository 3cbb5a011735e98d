#include "telephone/http/HttpGuard.h"

#include <algorithm>

#include <httplib.h>
#include <spdlog/fmt/fmt.h>

#include "telephone/base/Names.h"
#include "telephone/http/AccessToken.h"

namespace telephone {

namespace {

constexpr std::string_view kBearer = "Bearer ";

}  // namespace

HttpGuard::HttpGuard(std::string const& host, int port, bool isSecure, AccessToken const& token)
    : scheme_(isSecure ? "https" : "http")
    , port_(port)
    , hosts_({hostHeader(host), hostHeader("localhost")})
    , origin_(scheme_ + "://" + hosts_.front())
    , token_(token)
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

std::optional<HttpRefusal> HttpGuard::check(httplib::Request const& request) const
{
    if (!isOwnHost(request)) {
        return HttpRefusal{403, "the header Host does not name this telephone: use " + origin_};
    }
    std::string const own = scheme_ + "://" + request.get_header_value("Host");
    if (request.has_header("Origin") && !equalIgnoringCase(request.get_header_value("Origin"), own)) {
        return HttpRefusal{403, "pages of other origins have no access"};
    }
    if (!hasToken(request)) {
        return HttpRefusal{401,
                           "the token is missing or wrong: send \"Authorization: Bearer TOKEN\", or add ?token=TOKEN "
                           "to the address; the telephone has printed it at its start"};
    }
    return std::nullopt;
}

}  // namespace telephone
