#include "LoopbackCapture.h"

#include <array>
#include <cstring>
#include <optional>
#include <utility>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <netinet/ip.h>
#include <netinet/tcp.h>
#include <netinet/udp.h>
#include <sys/socket.h>

namespace {

constexpr int kRoom = 64 << 20;

// Whole IPv4 packets of the loopback interface.
int openSocket()
{
    int const descriptor = socket(AF_PACKET, SOCK_DGRAM | SOCK_CLOEXEC, htons(ETH_P_IP));
    sockaddr_ll loopback{};
    loopback.sll_family = AF_PACKET;
    loopback.sll_protocol = htons(ETH_P_IP);
    loopback.sll_ifindex = static_cast<int>(if_nametoindex("lo"));
    timeval const patience{0, 50'000};
    if (descriptor >= 0) {
        (void)setsockopt(descriptor, SOL_SOCKET, SO_RCVBUFFORCE, &kRoom, sizeof kRoom);
        (void)setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        (void)bind(descriptor, reinterpret_cast<sockaddr*>(&loopback), sizeof loopback);
    }
    return descriptor;
}

std::string addressText(in_addr_t address)
{
    std::array<char, INET_ADDRSTRLEN> text{};
    in_addr const written{address};
    return inet_ntop(AF_INET, &written, text.data(), text.size());
}

// Nothing: neither UDP nor TCP, or cut short.
std::optional<LoopbackCapture::Packet> packetOf(char const* bytes, std::size_t size)
{
    iphdr ip{};
    if (size < sizeof ip) {
        return std::nullopt;
    }
    std::memcpy(&ip, bytes, sizeof ip);
    std::size_t const headers = std::size_t{ip.ihl} * 4;
    tcphdr tcp{};
    bool const isDatagram = ip.protocol == IPPROTO_UDP;
    std::size_t const least = isDatagram ? sizeof(udphdr) : sizeof tcp;
    if ((!isDatagram && ip.protocol != IPPROTO_TCP) || size < headers + least) {
        return std::nullopt;
    }
    std::memcpy(&tcp, bytes + headers, least);  // both begin with the ports
    std::size_t const begin = headers + (isDatagram ? least : std::size_t{tcp.doff} * 4);
    if (begin > size) {
        return std::nullopt;
    }
    return LoopbackCapture::Packet{isDatagram,        addressText(ip.saddr), addressText(ip.daddr),
                                   ntohs(tcp.source), ntohs(tcp.dest),       std::string(bytes + begin, size - begin)};
}

}  // namespace

LoopbackCapture::LoopbackCapture(Wanted wanted)
    : wanted_(std::move(wanted))
    , socket_(openSocket())
    , thread_([this] { read(); })
{}

LoopbackCapture::~LoopbackCapture()
{
    (void)stop();
}

bool LoopbackCapture::isPermitted()
{
    return telephone::FileDescriptor(openSocket()).get() >= 0;
}

// Loopback shows each packet twice, as it leaves and as it arrives.
void LoopbackCapture::read()
{
    std::vector<char> bytes(65536);
    while (!ends_) {
        sockaddr_ll from{};
        socklen_t length = sizeof from;
        auto const size =
            recvfrom(socket_.get(), bytes.data(), bytes.size(), 0, reinterpret_cast<sockaddr*>(&from), &length);
        if (size <= 0 || from.sll_pkttype == PACKET_OUTGOING) {
            continue;
        }
        auto packet = packetOf(bytes.data(), static_cast<std::size_t>(size));
        if (packet && wanted_(*packet)) {
            datagrams_ += packet->isDatagram ? 1 : 0;
            packets_.push_back(*std::move(packet));
        }
    }
}

std::vector<LoopbackCapture::Packet> const& LoopbackCapture::stop()
{
    if (thread_.joinable()) {
        ends_ = true;
        thread_.join();
        tpacket_stats lost{};
        socklen_t size = sizeof lost;
        EXPECT_EQ(getsockopt(socket_.get(), SOL_PACKET, PACKET_STATISTICS, &lost, &size), 0);
        EXPECT_EQ(lost.tp_drops, 0U) << "the capture is incomplete";
    }
    return packets_;
}
