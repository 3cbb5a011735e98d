// Records the packets that pass between certain addresses of this machine, as anybody on the way would see them. Needs
// the right to open packet sockets (root, or CAP_NET_RAW).
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "telephone/framework/FileDescriptor.h"

class LoopbackCapture
{
public:
    struct Packet
    {
        bool isDatagram = false;  // UDP, else TCP
        std::string from;         // IPv4 address
        std::string to;
        std::uint16_t fromPort = 0;
        std::uint16_t toPort = 0;
        std::string payload;
    };
    using Wanted = std::function<bool(Packet const&)>;

    // Begins at once; keeps the packets that are wanted.
    explicit LoopbackCapture(Wanted wanted);
    ~LoopbackCapture();
    LoopbackCapture(LoopbackCapture const&) = delete;
    LoopbackCapture& operator=(LoopbackCapture const&) = delete;

    static bool isPermitted();

    // So far.
    long datagrams() const { return datagrams_; }
    // Ends it. All packets, in order.
    std::vector<Packet> const& stop();

private:
    void read();

    Wanted const wanted_;
    telephone::FileDescriptor const socket_;
    std::vector<Packet> packets_;
    std::atomic<long> datagrams_{0};
    std::atomic<bool> ends_{false};
    std::thread thread_;
};
