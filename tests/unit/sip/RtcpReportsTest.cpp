#include "telephone/sip/RtcpReports.h"

#include <gtest/gtest.h>

#include "telephone/time/VirtualTime.h"
#include "telephone/time/Waiting.h"

namespace telephone::sip {
namespace {

using namespace std::chrono_literals;

std::string hexOf(std::string const& bytes)
{
    std::string hex;
    for (char const each : bytes) {
        auto const byte = static_cast<unsigned char>(each);
        constexpr char const* kDigits = "0123456789abcdef";
        hex += {kDigits[byte >> 4], kDigits[byte & 0xf]};
    }
    return hex;
}

class RtcpReportsTest : public testing::Test
{
protected:
    void receive(std::uint16_t sequence, std::uint32_t timestamp = 0, std::uint32_t ssrc = 0x0a0b0c0d)
    {
        rtp_header header{};
        header.seq = sequence;
        header.ts = timestamp;
        header.ssrc = ssrc;
        reports_.onReceived(header, true);
    }
    std::string written(std::uint32_t timestamp = 0)
    {
        Ref<mbuf> report;
        EXPECT_TRUE(reports_.write(report, timestamp));
        return hexOf(remainingText(report.get()));
    }
    void read(std::string const& hex)
    {
        std::string bytes;
        for (std::size_t i = 0; i < hex.size(); i += 2) {
            bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
        }
        Ref<mbuf> report;
        ASSERT_TRUE(fill(report, bytes));
        reports_.read(*report.get());
    }
    AudioStatistics statistics() const
    {
        AudioStatistics all;
        reports_.fillIn(all);
        return all;
    }

    VirtualTime const time_{{}};
    RtcpReports reports_{0x11223344, "abc"};
};

TEST_F(RtcpReportsTest, BeforeAnything_IsAnEmptyReceiverReportWithOurName)
{
    EXPECT_EQ(written(), "80c9000111223344"
                         "81ca0003112233440103616263000000");
}

TEST_F(RtcpReportsTest, SenderReport_CountsPacketsAndOctets)
{
    reports_.onSent(160);
    reports_.onSent(4);

    std::string const report = written(0x01020304);

    EXPECT_EQ(report.substr(0, 16), "80c8000611223344");
    EXPECT_EQ(report.substr(32, 24), "0102030400000002000000a4");
    EXPECT_EQ(written().substr(0, 4), "80c9") << "nothing has been sent since";
}

TEST_F(RtcpReportsTest, LostPackets_AreReportedAndCounted)
{
    for (auto const sequence : std::initializer_list<std::uint16_t>{65534, 65535, 2, 3, 5}) {
        receive(sequence);
    }

    // Five of eight: 96 of 256 lost, 3 altogether, and once around the sequence numbers.
    EXPECT_EQ(written().substr(0, 64), "81c90007112233440a0b0c0d60000003000100050000000000000000"
                                       "00000000");
    EXPECT_EQ(statistics().lost, 3U);
    receive(6);
    EXPECT_EQ(written().substr(24, 8), "00000003") << "none since the last report";
}

TEST_F(RtcpReportsTest, PacketsOutOfOrderOrTwice_AreNotLost)
{
    for (auto const sequence : std::initializer_list<std::uint16_t>{1, 3, 2, 3, 4}) {
        receive(sequence);
    }

    EXPECT_EQ(statistics().lost, 0U);
}

TEST_F(RtcpReportsTest, JumpOfTheSequence_CountsOnceItIsConfirmed)
{
    receive(1);
    receive(20000);
    receive(2);
    EXPECT_EQ(statistics().lost, 0U);

    receive(30000);
    receive(30001);
    receive(30003);

    EXPECT_EQ(statistics().lost, 1U);
}

TEST_F(RtcpReportsTest, NewSource_KeepsWhatTheOldOneLost)
{
    receive(1);
    receive(4);

    receive(500, 0, 0x99);

    EXPECT_EQ(statistics().lost, 2U);
}

TEST_F(RtcpReportsTest, Jitter_IsThatOfTheRule)
{
    // Each second packet comes 16 ms late: 128 units, again and again.
    std::uint32_t timestamp = 0;
    for (std::uint16_t sequence = 1; sequence <= 400; ++sequence, timestamp += 160) {
        receive(sequence, timestamp);
        sleepFor(sequence % 2 == 0 ? 4ms : 36ms);
    }

    EXPECT_NEAR(static_cast<double>(statistics().jitter.count()), 16000, 500);
}

TEST_F(RtcpReportsTest, RoundTrip_IsTheTimeWithoutTheFarEndsDelay)
{
    reports_.onSent(160);
    std::string const ours = written();
    sleepFor(500ms);

    // The middle of our time, and a delay of 0.25 s: 0x4000.
    read("81c9000755667788"
         "11223344"
         "00000007"
         "00000001"
         "00000050" +
         ours.substr(20, 8) + "00004000");

    EXPECT_EQ(statistics().farLost, 7U);
    EXPECT_EQ(statistics().farJitter, 10ms);
    ASSERT_TRUE(statistics().roundTrip);
    EXPECT_NEAR(static_cast<double>(statistics().roundTrip->count()), 250'000, 50);
}

TEST_F(RtcpReportsTest, RoundTrip_IsUnknownWithoutAReportOfOursOrWithALongerDelay)
{
    reports_.onSent(160);
    std::string const ours = written().substr(20, 8);
    sleepFor(500ms);
    std::string const before = "81c9000755667788"
                               "11223344"
                               "00000007"
                               "00000001"
                               "00000050";

    read(before + "00000000" + "00000000");
    EXPECT_FALSE(statistics().roundTrip) << "the far end has had none of our reports";
    read(before + ours + "0000c000");
    EXPECT_FALSE(statistics().roundTrip) << "0.75 s of 0.5";
    EXPECT_EQ(statistics().farLost, 7U);
}

TEST_F(RtcpReportsTest, SenderReportOfTheFarEnd_IsNamedInOurs)
{
    receive(1);
    read("80c80006"
         "55667788"
         "0000abcd"
         "12340000"
         "00000000"
         "00000001"
         "000000a0");
    sleepFor(250ms);

    EXPECT_EQ(written().substr(48, 16), "abcd1234"
                                        "00004000");
}

TEST_F(RtcpReportsTest, ReportsAboutOthersAndMalformedOnes_ChangeNothing)
{
    read("81c9000755667788"
         "99999999"
         "00000007"
         "00000001"
         "00000050"
         "00000000"
         "00000000");
    read("81c90007556677");
    read("00");
    read("81c8ffff");

    EXPECT_FALSE(statistics().farLost);
    EXPECT_FALSE(statistics().roundTrip);
}

}  // namespace
}  // namespace telephone::sip
