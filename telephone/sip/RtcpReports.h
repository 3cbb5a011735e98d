// The RTCP of one stream (RFC 3550 section 6): what is counted of the far end's packets, the reports that say so, and
// what the far end's say about ours. Owned by its stream, which sends and receives; used under the lock.
//
// Written here, not taken from the stack: that counts packets before anybody knows whether they are authentic, and
// reads a clock that is not the telephone's.
#pragma once

#include <array>
#include <chrono>
#include <optional>

#include "telephone/sip/Audio.h"
#include "telephone/sip/Stack.h"
#include "telephone/time/SteadyClock.h"

namespace telephone::sip {

class RtcpReports
{
public:
    // What we send with.
    RtcpReports(std::uint32_t ssrc, std::string cname)
        : ssrc_(ssrc)
        , cname_(std::move(cname))
    {}

    void onSent(std::size_t payload);
    // timed: the timestamp says when the packet was due, so that it counts for the jitter.
    void onReceived(rtp_header const& header, bool timed);

    // A sender report if we have sent since the last one, else a receiver report; with our name. False without memory.
    bool write(Ref<mbuf>& report, std::uint32_t timestamp);
    // The far end's report. What is malformed, or about another stream, changes nothing.
    void read(mbuf& packet);

    // Adds what is known here.
    void fillIn(AudioStatistics& statistics) const;

private:
    // The packets of one source of the far end's (RFC 3550 appendix A.1, A.3 and A.8).
    struct Source
    {
        std::uint32_t ssrc = 0;
        std::uint32_t first = 0;    // extended sequence number
        std::uint32_t highest = 0;  // extended, too
        std::uint32_t received = 0;
        std::uint32_t transit = 0;
        std::uint32_t jitter = 0;                // in timestamp units, times 16
        std::optional<std::uint16_t> afterJump;  // the number that would confirm it
        std::uint32_t expectedBefore = 0;        // at the last report
        std::uint32_t receivedBefore = 0;

        std::uint32_t expected() const { return highest - first + 1; }
        std::int32_t lost() const { return static_cast<std::int32_t>(expected() - received); }
    };

    void begin(rtp_header const& header);
    std::uint16_t stepTo(std::uint16_t sequence) const;
    bool isJump(std::uint16_t sequence) const;
    void writeBlock(mbuf& report);
    void onBlock(rtcp_rr const& block);
    static std::uint32_t shortTime();

    std::uint32_t const ssrc_;
    std::string const cname_;
    std::uint32_t packetsSent_ = 0;
    std::uint32_t octetsSent_ = 0;
    bool sentSinceReport_ = false;

    std::optional<Source> source_;
    std::uint64_t lostBefore_ = 0;  // of sources that are gone
    // The far end's last sender report: the middle of its time, and when it came.
    std::uint32_t lastReport_ = 0;
    std::uint32_t lastReportCame_ = 0;

    std::optional<rtcp_rr> farBlock_;
    std::optional<std::chrono::microseconds> roundTrip_;
};

}  // namespace telephone::sip
