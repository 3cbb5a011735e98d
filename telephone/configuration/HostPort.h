// The address of a server as a configuration writes it: "127.0.0.1:8080", "localhost:0", "[::1]:8080". Pure functions.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace telephone {

struct HostPort
{
    std::string host;  // without brackets
    std::uint16_t port = 0;
};

// Nothing without a host, or without a port from 0 to 65535.
std::optional<HostPort> hostPortOf(std::string_view text);

// Whether the text is an IPv4 address, or an IPv6 address without brackets.
bool isIpAddress(std::string const& text);

// Whether only programs on this machine reach the host: "localhost", 127.0.0.0/8 or ::1. A name is not looked up.
bool isLoopback(std::string const& host);

}  // namespace telephone
