#include "telephone/configuration/HostPort.h"

#include <charconv>

#include <arpa/inet.h>

namespace telephone {

std::optional<HostPort> hostPortOf(std::string_view text)
{
    auto const colon = text.rfind(':');
    if (colon == std::string_view::npos) {
        return std::nullopt;
    }
    std::string_view host = text.substr(0, colon);
    std::string_view const digits = text.substr(colon + 1);
    bool const isBracketed = host.size() > 2 && host.front() == '[' && host.back() == ']';
    host = isBracketed ? host.substr(1, host.size() - 2) : host;
    HostPort place{std::string(host)};
    auto const [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), place.port);
    bool const isPort = error == std::errc() && end == digits.data() + digits.size();
    bool const isHost = !host.empty() && host.find_first_of("[]/@ ") == std::string_view::npos &&
                        (isBracketed || host.find(':') == std::string_view::npos);
    return isPort && isHost ? std::optional(place) : std::nullopt;
}

bool isIpAddress(std::string const& text)
{
    in_addr address{};
    in6_addr address6{};
    return inet_pton(AF_INET, text.c_str(), &address) == 1 || inet_pton(AF_INET6, text.c_str(), &address6) == 1;
}

bool isLoopback(std::string const& host)
{
    in_addr address{};
    in6_addr address6{};
    bool const isIpv4 = inet_pton(AF_INET, host.c_str(), &address) == 1;
    bool const isIpv6 = inet_pton(AF_INET6, host.c_str(), &address6) == 1;
    return host == "localhost" || (isIpv4 && (ntohl(address.s_addr) >> 24U) == IN_LOOPBACKNET) ||
           (isIpv6 && IN6_IS_ADDR_LOOPBACK(&address6) != 0);
}

}  // namespace telephone
