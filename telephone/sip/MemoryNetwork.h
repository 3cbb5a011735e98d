// The network of virtual time: what the process sends itself, on its way. No socket is opened, so that every run has
// the same ports and any number of runs go on beside each other. The sockets of MemorySockets.h send
// through it; the event loop delivers. Used under the loop's lock, and by the loop's thread while it waits.
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <functional>
#include <map>
#include <string_view>
#include <utility>

#include "telephone/sip/Stack.h"
#include "telephone/time/SteadyClock.h"

namespace telephone::sip {

// An IP address and port, comparable.
struct SocketAddress
{
    std::array<std::uint8_t, 16> host{};
    std::uint16_t port = 0;

    explicit SocketAddress(sa const& address);
    auto operator<=>(SocketAddress const&) const = default;
};

class MemoryNetwork
{
public:
    using Arrival = std::function<void()>;

    // Something is on its way: at once in plain order, after up to 30 ms where a seed draws the delay. What one sends
    // another arrives in the order in which it was sent.
    void send(sa const& from, sa const& to, Arrival arrival);
    // The same for a datagram, which may meet with a fault (DatagramFaults.h).
    void sendDatagram(sa const& from, sa const& to, std::string_view bytes, Arrival arrival);

    [[nodiscard]] SteadyClock::time_point nextArrival() const;
    // Everything whose time has come. Called by the event loop.
    void deliver();

    // A port that nobody has used before.
    [[nodiscard]] std::uint16_t freePort();

private:
    using Flow = std::pair<SocketAddress, SocketAddress>;

    [[nodiscard]] SteadyClock::duration delay();
    // Until the next datagram of the flow has been sent, but not for long.
    void hold(Flow const& flow, Arrival arrival);
    void sendHeld(Flow const& flow);

    struct Packet
    {
        Flow flow;
        Arrival arrival;
    };

    // In the order of their time, and then of their sending.
    std::multimap<SteadyClock::time_point, Packet> packets_;
    std::map<Flow, SteadyClock::time_point> last_;  // packet under way
    std::map<Flow, Arrival> held_;                  // to be overtaken
    std::uint16_t lastPort_ = 40000;
};

MemoryNetwork& memoryNetwork();

// Whether anybody in this process receives at the address: datagrams or connections. In virtual time.
[[nodiscard]] bool isInMemory(sa const& address);

}  // namespace telephone::sip
