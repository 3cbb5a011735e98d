#include "telephone/sip/MemoryNetwork.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

#include "telephone/sip/DatagramFaults.h"
#include "telephone/time/VirtualTime.h"

namespace telephone::sip {

namespace {

constexpr std::uint64_t kMostDelay = 30'000;  // microseconds
constexpr std::chrono::milliseconds kLongestHold{1000};
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

void MemoryNetwork::sendDatagram(sa const& from, sa const& to, std::string_view bytes, Arrival arrival)
{
    if (datagramFaults().isEmpty() && held_.empty()) {
        return send(from, to, std::move(arrival));
    }
    Flow const flow{SocketAddress(from), SocketAddress(to)};
    if (held_.contains(flow)) {
        send(from, to, std::move(arrival));  // it overtakes, and meets with no other fault
        return sendHeld(flow);
    }
    auto const verdict = datagramFaults().judge({addressText(from), addressText(to), bytes});
    switch (verdict.fate) {
    case DatagramFate::kLost:
        return;
    case DatagramFate::kLate:
        packets_.emplace(SteadyClock::now() + verdict.delay, Packet{flow, std::move(arrival)});
        return;
    case DatagramFate::kOvertaken:
        return hold(flow, std::move(arrival));
    case DatagramFate::kDoubled:
        send(from, to, arrival);
        break;
    case DatagramFate::kArrives:
        break;
    }
    send(from, to, std::move(arrival));
}

void MemoryNetwork::hold(Flow const& flow, Arrival arrival)
{
    // It arrives once: behind the next one, or, if there is none, after a while.
    auto const pending = std::make_shared<Arrival>(std::move(arrival));
    Arrival const once = [this, flow, pending] {
        if (auto const arrive = std::exchange(*pending, nullptr)) {
            held_.erase(flow);
            arrive();
        }
    };
    held_[flow] = once;
    packets_.emplace(SteadyClock::now() + kLongestHold, Packet{flow, once});
}

void MemoryNetwork::sendHeld(Flow const& flow)
{
    if (auto held = held_.extract(flow)) {
        auto const last = last_.find(flow);
        auto const time = last == last_.end() ? SteadyClock::now() : last->second;
        packets_.emplace(time, Packet{flow, std::move(held.mapped())});
    }
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
