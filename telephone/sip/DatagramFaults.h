// What befalls the datagrams of virtual time when somebody asks for it: they are lost, come twice, late or out of
// order. The network in memory asks about each datagram (MemoryNetwork.h). One object for the process, as the network.
// Used under the loop's lock.
//
//     auto const id = datagramFaults().begin({.fate = DatagramFate::kLost, .concerns = isSip, .count = 2});
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <string>
#include <string_view>

struct sa;

namespace telephone::sip {

struct Datagram
{
    std::string from;  // "address:port"
    std::string to;
    std::string_view bytes;

    // RTP and RTCP begin with their version, 2, in two bits (RFC 3550, 5.1); SIP with a letter.
    [[nodiscard]] bool isMedia() const;
    [[nodiscard]] bool isRtp() const;
    // "from 127.0.0.1:40000 to 127.0.0.1:40002 (INVITE sip:100@127.0.0.1:40002 SIP/2.0)"
    [[nodiscard]] std::string describe() const;
};

enum class DatagramFate
{
    kArrives,
    kLost,
    kDoubled,
    kLate,       // those behind it do not wait for it
    kOvertaken,  // it arrives after the next one to the same receiver
};

struct DatagramFault
{
    DatagramFate fate = DatagramFate::kLost;
    std::function<bool(Datagram const&)> concerns = {};  // which datagrams; no more than a question
    unsigned percent = 100;                              // of these, drawn
    int count = 0;                                       // so many, then the fault ends; 0: without end
    std::chrono::milliseconds delay{0};                  // of kLate
    std::function<void(Datagram const&)> befell = {};    // told of each
    std::function<void()> ended = {};                    // told when `count` is reached
};

class DatagramFaults
{
public:
    using Id = std::uint64_t;

    struct Verdict
    {
        DatagramFate fate = DatagramFate::kArrives;
        std::chrono::milliseconds delay{0};
    };

    // Audio that nobody hears is not sent until then; from then on it is, if the fault concerns RTP (RtpStream.h).
    Id begin(DatagramFault fault);
    // Does nothing if it has ended.
    void end(Id id);

    [[nodiscard]] bool isEmpty() const { return faults_.empty(); }
    // Whether a fault concerns RTP between these two ends.
    [[nodiscard]] bool mayBefallRtp(sa const& from, sa const& to) const;
    // What befalls a datagram: of several faults, the one that began first and concerns it.
    Verdict judge(Datagram const& datagram);

private:
    struct Entry
    {
        Id id;
        DatagramFault fault;
    };

    std::list<Entry> faults_;
    Id lastId_ = 0;
};

DatagramFaults& datagramFaults();

}  // namespace telephone::sip
