#include "telephone/sip/MemoryNetwork.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "telephone/time/VirtualTime.h"

namespace telephone::sip {

namespace {

constexpr std::uint64_t kMostDelay = 30'000;  // microseconds
constexpr std::uint16_t kFirstPort = 40000;
constexpr std::uint16_t kLastPort = 65534;

}  // namespace

SocketAddress::SocketAddress(sa const& address)
    : port(sa_port(&address))
{
    if (sa_af(&address) == AF_INET6) {
        sa_in6(&address, host.data());
    } else {
        std::uint32_t const ip = sa_in(&address);
        std::memcpy(host.data(), &ip, sizeof ip);
    }
}

SteadyClock::duration MemoryNetwork::delay()
{
    return virtualSeed() == 0 ? SteadyClock::duration(0) : std::chrono::microseconds(randomNumber() % kMostDelay);
}

void MemoryNetwork::send(sa const& from, sa const& to, Arrival arrival)
{
    Flow const flow{SocketAddress(from), SocketAddress(to)};
    auto& last = last_[flow];
    last = std::max(last, SteadyClock::now() + delay());
    packets_.emplace(last, Packet{flow, std::move(arrival)});
}

SteadyClock::time_point MemoryNetwork::nextArrival() const
{
    return packets_.empty() ? kNoDeadline : packets_.begin()->first;
}

void MemoryNetwork::deliver()
{
    // What is sent meanwhile waits for the next turn, so that no exchange of messages keeps the loop to itself.
    auto const end = packets_.upper_bound(SteadyClock::now());
    std::multimap<SteadyClock::time_point, Packet> due;
    while (packets_.begin() != end) {
        due.insert(due.end(), packets_.extract(packets_.begin()));
    }
    for (auto const& [time, packet] : due) {
        if (auto const last = last_.find(packet.flow); last != last_.end() && last->second == time) {
            last_.erase(last);
        }
        packet.arrival();
    }
}

std::uint16_t MemoryNetwork::freePort()
{
    // Even numbers, as RTP has them (RFC 3550, 11).
    lastPort_ = lastPort_ >= kLastPort ? kFirstPort : static_cast<std::uint16_t>(lastPort_ + 2);
    return lastPort_;
}

MemoryNetwork& memoryNetwork()
{
    // Never destroyed: the stack's sockets may outlive the variables of main.
    static auto& network = *new MemoryNetwork;
    return network;
}

}  // namespace telephone::sip
