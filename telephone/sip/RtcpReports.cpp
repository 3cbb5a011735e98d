#include "telephone/sip/RtcpReports.h"

#include <algorithm>

namespace telephone::sip {

namespace {

constexpr std::uint16_t kMostDropped = 3000;  // RFC 3550 appendix A.1
constexpr std::uint16_t kMostMisordered = 100;
constexpr std::int32_t kMostLost = 0x7fffff;  // of 24 bits, with its sign
constexpr std::uint32_t kWord = 4;
constexpr std::uint32_t kSequences = 0x10000;

// Fractions of a second in 64 bits, 32 of them whole seconds. The steady clock will do (RFC 3550 section 4).
std::uint64_t networkTime()
{
    using namespace std::chrono;
    auto const now = duration_cast<microseconds>(SteadyClock::now().time_since_epoch()).count();
    auto const seconds = static_cast<std::uint64_t>(now / 1'000'000);
    auto const rest = static_cast<std::uint64_t>(now % 1'000'000);
    return (seconds << 32) | ((rest << 32) / 1'000'000);
}

std::uint32_t arrivalTime()
{
    return static_cast<std::uint32_t>(tmr_jiffies() * (kSampleRate / 1000));
}

std::chrono::microseconds durationOf(std::uint32_t timestampUnits)
{
    return std::chrono::microseconds(std::uint64_t{timestampUnits} * 1'000'000 / kSampleRate);
}

void writeHeader(mbuf& report, rtcp_type type, unsigned count, std::size_t bytes)
{
    (void)mbuf_write_u8(&report, static_cast<std::uint8_t>(RTCP_VERSION << 6 | count));
    (void)mbuf_write_u8(&report, static_cast<std::uint8_t>(type));
    (void)mbuf_write_u16(&report, htons(static_cast<std::uint16_t>(bytes / kWord)));
}

void writeWord(mbuf& report, std::uint32_t word)
{
    (void)mbuf_write_u32(&report, htonl(word));
}

// SDES with a CNAME: its length, the text and its end, filled up to a whole word.
void writeName(mbuf& report, std::uint32_t ssrc, std::string const& name)
{
    std::size_t const item = 2 + name.size() + 1;
    std::size_t const filling = (kWord - item % kWord) % kWord;
    writeHeader(report, RTCP_SDES, 1, sizeof ssrc + item + filling);
    writeWord(report, ssrc);
    (void)mbuf_write_u8(&report, RTCP_SDES_CNAME);
    (void)mbuf_write_u8(&report, static_cast<std::uint8_t>(name.size()));
    (void)mbuf_write_str(&report, name.c_str());
    (void)mbuf_fill(&report, 0, 1 + filling);
}

}  // namespace

std::uint32_t RtcpReports::shortTime()
{
    return static_cast<std::uint32_t>(networkTime() >> 16);
}

void RtcpReports::onSent(std::size_t payload)
{
    ++packetsSent_;
    octetsSent_ += static_cast<std::uint32_t>(payload);
    sentSinceReport_ = true;
}

void RtcpReports::begin(rtp_header const& header)
{
    if (source_) {
        lostBefore_ += static_cast<std::uint64_t>(std::max(source_->lost(), 0));
    }
    source_ = Source{};
    source_->ssrc = header.ssrc;
    source_->first = source_->highest = header.seq;
}

std::uint16_t RtcpReports::stepTo(std::uint16_t sequence) const
{
    return static_cast<std::uint16_t>(sequence - source_->highest);
}

bool RtcpReports::isJump(std::uint16_t sequence) const
{
    auto const step = stepTo(sequence);
    return step >= kMostDropped && step <= kSequences - kMostMisordered;
}

void RtcpReports::onReceived(rtp_header const& header, bool timed)
{
    bool const other = !source_ || source_->ssrc != header.ssrc;
    bool const jump = !other && isJump(header.seq);
    if (other || (jump && source_->afterJump == header.seq)) {
        begin(header);
    } else if (jump) {
        source_->afterJump = static_cast<std::uint16_t>(header.seq + 1);
        return;
    } else if (stepTo(header.seq) < kMostDropped) {
        source_->highest += stepTo(header.seq);
    }
    ++source_->received;
    std::uint32_t const transit = arrivalTime() - header.ts;
    if (timed && source_->received > 1) {
        auto const difference = static_cast<std::int32_t>(transit - source_->transit);
        auto const distance = static_cast<std::uint32_t>(std::abs(difference));
        source_->jitter += distance - ((source_->jitter + 8) >> 4);
    }
    if (timed) {
        source_->transit = transit;
    }
}

void RtcpReports::writeBlock(mbuf& report)
{
    std::uint32_t const expected = source_->expected() - source_->expectedBefore;
    std::uint32_t const received = source_->received - source_->receivedBefore;
    source_->expectedBefore = source_->expected();
    source_->receivedBefore = source_->received;
    std::uint32_t const fraction = expected > received ? ((expected - received) << 8) / expected : 0;
    auto const lost = static_cast<std::uint32_t>(std::clamp(source_->lost(), -kMostLost, kMostLost)) & 0xffffffU;
    writeWord(report, source_->ssrc);
    writeWord(report, std::min(fraction, 0xffU) << 24 | lost);
    writeWord(report, source_->highest);
    writeWord(report, source_->jitter >> 4);
    writeWord(report, lastReport_);
    writeWord(report, lastReport_ == 0 ? 0 : shortTime() - lastReportCame_);
}

bool RtcpReports::write(Ref<mbuf>& report, std::uint32_t timestamp)
{
    constexpr std::size_t kSenderWords = 6;
    constexpr std::size_t kBlockWords = 6;
    *report.out() = mbuf_alloc(128);
    if (!report) {
        return false;
    }
    mbuf& packet = *report.get();
    bool const sender = std::exchange(sentSinceReport_, false);
    unsigned const blocks = source_ ? 1 : 0;
    std::size_t const words = (sender ? kSenderWords : 1) + blocks * kBlockWords;
    writeHeader(packet, sender ? RTCP_SR : RTCP_RR, blocks, words * kWord);
    writeWord(packet, ssrc_);
    if (sender) {
        std::uint64_t const now = networkTime();
        writeWord(packet, static_cast<std::uint32_t>(now >> 32));
        writeWord(packet, static_cast<std::uint32_t>(now));
        writeWord(packet, timestamp);
        writeWord(packet, packetsSent_);
        writeWord(packet, octetsSent_);
    }
    if (source_) {
        writeBlock(packet);
    }
    writeName(packet, ssrc_, cname_);
    mbuf_set_pos(&packet, 0);
    return true;
}

void RtcpReports::onBlock(rtcp_rr const& block)
{
    if (block.ssrc != ssrc_) {
        return;
    }
    farBlock_ = block;
    auto const elapsed = static_cast<std::int32_t>(shortTime() - block.lsr - block.dlsr);
    if (block.lsr != 0 && elapsed >= 0) {
        roundTrip_ = std::chrono::microseconds(std::int64_t{elapsed} * 1'000'000 / 65536);
    }
}

void RtcpReports::read(mbuf& packet)
{
    while (mbuf_get_left(&packet) > 0) {
        Ref<rtcp_msg> message;
        if (rtcp_decode(message.out(), &packet) != 0) {
            return;
        }
        rtcp_msg const& report = *message.get();
        bool const sender = report.hdr.pt == RTCP_SR;
        if (sender) {
            lastReport_ = report.r.sr.ntp_sec << 16 | report.r.sr.ntp_frac >> 16;
            lastReportCame_ = shortTime();
        }
        if (!sender && report.hdr.pt != RTCP_RR) {
            continue;
        }
        rtcp_rr const* const blocks = sender ? report.r.sr.rrv : report.r.rr.rrv;
        for (unsigned i = 0; blocks != nullptr && i < report.hdr.count; ++i) {
            onBlock(blocks[i]);
        }
    }
}

void RtcpReports::fillIn(AudioStatistics& statistics) const
{
    statistics.sent = packetsSent_;
    statistics.lost = lostBefore_;
    if (source_) {
        statistics.lost += static_cast<std::uint64_t>(std::max(source_->lost(), 0));
        statistics.jitter = durationOf(source_->jitter >> 4);
    }
    statistics.roundTrip = roundTrip_;
    if (farBlock_) {
        statistics.farLost = static_cast<std::uint64_t>(std::max<int>(farBlock_->lost, 0));
        statistics.farJitter = durationOf(farBlock_->jitter);
    }
}

}  // namespace telephone::sip
