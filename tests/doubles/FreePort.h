// A port on loopback for a server that a test starts, possibly more than once.
#pragma once

#include <cstdint>
#include <random>
#include <stdexcept>

#include <arpa/inet.h>
#include <sys/socket.h>

#include "telephone/framework/FileDescriptor.h"

// A port that is free on UDP and TCP. It lies below those that the kernel gives to sockets without a port of their own
// (Linux: from 32768), so that none of theirs takes it before it is used.
inline int freePort()
{
    std::random_device random;
    std::uniform_int_distribution<std::uint16_t> ports(20000, 32767);
    for (int attempt = 0; attempt < 100; ++attempt) {
        telephone::FileDescriptor const udp(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
        telephone::FileDescriptor const tcp(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        std::uint16_t const port = ports(random);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        auto const* const plain = reinterpret_cast<sockaddr const*>(&address);
        if (bind(udp.get(), plain, sizeof(address)) == 0 && bind(tcp.get(), plain, sizeof(address)) == 0) {
            return port;
        }
    }
    throw std::runtime_error("no free port");
}
