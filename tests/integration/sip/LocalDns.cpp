#include "LocalDns.h"

#include <chrono>
#include <fstream>

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include "telephone/framework/FileDescriptor.h"
#include "telephone/time/SteadyClock.h"
#include "tests/helpers/TestTime.h"

namespace telephone::test {

LocalDns::LocalDns()
    : port_(freeUdpPort())
{}

void LocalDns::serve(std::string const& records)
{
    std::string const configuration = folder_.file("dnsmasq.conf");
    std::ofstream(configuration) << "port=" << port_ << "\nlisten-address=127.0.0.1\nbind-interfaces\nno-resolv\n"
                                 << "no-hosts\nlocal=/test/\nuser=root\npid-file=\nauth-ttl=60\nlocal-ttl=60\n"
                                 << records;
    server_.emplace("dnsmasq", std::vector<std::string>{"--keep-in-foreground", "--conf-file=" + configuration},
                    folder_.file(""));
    ASSERT_TRUE(eventually([this] { return listens(); })) << "dnsmasq does not start";
}

bool LocalDns::listens() const
{
    FileDescriptor const socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port_));
    return connect(socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
}

std::int64_t millisecondsOf(std::function<void()> const& work)
{
    auto const begin = SteadyClock::now();
    work();
    return std::chrono::duration_cast<std::chrono::milliseconds>(SteadyClock::now() - begin).count();
}

}  // namespace telephone::test
