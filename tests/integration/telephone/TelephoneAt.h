// A telephone with a configuration of its own, in real time, and its application: for tests with several telephones, or
// with call servers of others.
#pragma once

#include <cstdint>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>

#include <arpa/inet.h>
#include <sys/socket.h>

#include "RunningTelephone.h"
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

inline void writeText(std::string const& path, std::string const& text)
{
    std::ofstream(path) << text;
}

// A telephone for applications at a call server, with these lines.
class TelephoneAt
{
public:
    TelephoneAt(std::string const& configuration)
        : telephone_({"--time", "real", "--config", file(configuration), "--log-level", "3"})
        , application(telephone_.socket())
    {
        EXPECT_EQ(application.request(method("Subscribe")), "sfiSuccess");
    }

    std::string call(std::string const& request, std::string const& line, int callID, std::string const& more = {})
    {
        return application
            .request(method(request, "<Line>" + line + "</Line><CallID>" + std::to_string(callID) + "</CallID>" + more))
            .value_or("");
    }

    // Its log is complete then.
    void end()
    {
        telephone_.process().signal(SIGTERM);
        EXPECT_EQ(telephone_.process().wait(), 0);
    }

private:
    std::string file(std::string const& configuration)
    {
        writeText(folder_.file("telephone.toml"), configuration);
        return folder_.file("telephone.toml");
    }

    TemporaryFolder folder_;
    RunningTelephone telephone_;

public:
    Application application;
};

inline std::string state(int callID, int state)
{
    return "<CallID>" + std::to_string(callID) + "</CallID><CallState>" + std::to_string(state) + "</CallState>";
}

inline std::string callIdOf(std::string const& event)
{
    auto const start = event.find("<CallID>") + 8;
    return event.substr(start, event.find("</CallID>", start) - start);
}

constexpr int kStateIdle = 0;
constexpr int kStateConnected = 6;
