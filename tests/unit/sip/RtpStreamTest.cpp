#include "telephone/sip/RtpStream.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "telephone/sip/DatagramFaults.h"
#include "telephone/sip/EventLoop.h"
#include "telephone/time/VirtualTime.h"
#include "telephone/time/Waiting.h"

// Two streams of one process in virtual time, in which audio that nobody hears is not sent.
namespace telephone::sip {
namespace {

using namespace std::chrono_literals;

// From the start on; it ends between two frames. Of the frames that are heard, the last one waits to be played then.
constexpr auto kFiftyFrames = 1010ms;

// Counts what it gives and takes.
class Voice : public AudioSource, public AudioSink
{
public:
    bool readFrame(AudioFrame& frame) override
    {
        frame.fill(1000);
        ++read;
        return true;
    }
    void skipFrames(std::uint64_t count) override { skipped += static_cast<int>(count); }
    void writeFrame(AudioFrame const&) override { ++written; }
    bool isListening() const override { return listens; }

    int read = 0;
    int skipped = 0;
    int written = 0;
    bool listens = true;
};

sa loopback(std::uint16_t port)
{
    sa address{};
    sa_set_str(&address, "127.0.0.1", port);
    return address;
}

// A socket that is no stream, and so always listens.
class PacketReader
{
public:
    PacketReader()
    {
        sa local = loopback(0);
        auto const received = [](sa const*, mbuf* packet, void* object) {
            rtp_header header{};
            (void)rtp_hdr_decode(&header, packet);
            static_cast<PacketReader*>(object)->headers.push_back(header);
        };
        (void)udp_listen(socket_.out(), &local, received, this);
    }
    [[nodiscard]] std::uint16_t port() const
    {
        sa local{};
        (void)udp_local_get(socket_.get(), &local);
        return sa_port(&local);
    }

    std::vector<rtp_header> headers;

private:
    Ref<udp_sock> socket_;
};

class RtpStreamTest : public testing::Test
{
protected:
    RtpStreamTest()
    {
        loop_.start();
        std::lock_guard const lock(loop_);
        connect(*left_, *right_);
        connect(*right_, *left_);
        left_->setSource(&leftVoice_);
    }
    ~RtpStreamTest() override
    {
        {
            std::lock_guard const lock(loop_);
            left_.reset();
            right_.reset();
        }
        loop_.stop();
    }

    static void connect(RtpStream& stream, RtpStream const& far, int payloadType = 0,
                        std::optional<CryptoKeys> const& keys = std::nullopt)
    {
        connect(stream, far.localPort(), payloadType, keys);
    }
    static void connect(RtpStream& stream, std::uint16_t farPort, int payloadType = 0,
                        std::optional<CryptoKeys> const& keys = std::nullopt)
    {
        SdpNegotiation::Agreement agreement;
        agreement.keys = keys;
        agreement.remote = loopback(farPort);
        agreement.remoteReports = loopback(static_cast<std::uint16_t>(farPort + 1));
        agreement.direction = Direction::kSendReceive;
        agreement.codec = "PCMU";
        agreement.payloadType = payloadType;
        agreement.received[static_cast<std::size_t>(payloadType)] = Payload::kULaw;
        agreement.eventPayloadType = 101;
        agreement.received[101] = Payload::kEvents;
        stream.apply(agreement);
    }

    VirtualTime const time_{{}};
    EventLoop loop_;
    MediaClock clock_{loop_};
    std::unique_ptr<RtpStream> left_ = std::make_unique<RtpStream>(clock_, loopback(0));
    std::unique_ptr<RtpStream> right_ = std::make_unique<RtpStream>(clock_, loopback(0));
    Voice leftVoice_;
    Voice rightVoice_;
};

TEST_F(RtpStreamTest, AudioThatNobodyHears_IsSkippedAndCountedOnly)
{
    sleepFor(kFiftyFrames);
    left_->catchUp();

    EXPECT_EQ(leftVoice_.read, 0);
    EXPECT_EQ(leftVoice_.skipped, 50);
    EXPECT_EQ(left_->unheard(), 50U);
}

TEST_F(RtpStreamTest, HoursThatNobodyHears_AreCountedAtOnce)
{
    sleepFor(10h);
    left_->catchUp();

    EXPECT_EQ(left_->unheard(), 1'800'000U);
}

// As after a silence in which nothing was sent (RFC 3550, 5.1): none counts as lost.
TEST_F(RtpStreamTest, FirstPacketThatIsHeard_HasTheNumbersOfItsMoment)
{
    PacketReader reader;
    connect(*left_, reader.port());
    sleepFor(30ms);  // one packet
    connect(*left_, *right_);
    sleepFor(1s);  // 50 that nobody hears
    connect(*left_, reader.port());
    sleepFor(20ms);

    ASSERT_EQ(reader.headers.size(), 2U);
    rtp_header const& first = reader.headers.front();
    rtp_header const& second = reader.headers.back();
    EXPECT_EQ(static_cast<std::uint16_t>(second.seq - first.seq), 1);
    EXPECT_EQ(second.ts - first.ts, 51U * 160U);
}

// RFC 3551, 4.1: the marker says where sound begins.
TEST_F(RtpStreamTest, FirstPacketThatIsHeardAgain_BeginsTheSound)
{
    for (bool const hears : {false, true}) {
        PacketReader reader;
        left_->setSink(hears ? &leftVoice_ : nullptr);
        connect(*left_, reader.port());
        sleepFor(50ms);
        connect(*left_, *right_);
        sleepFor(1s);
        connect(*left_, reader.port());
        sleepFor(40ms);

        ASSERT_EQ(reader.headers.size(), 4U);
        EXPECT_FALSE(reader.headers[1].m);
        EXPECT_TRUE(reader.headers[2].m) << hears;
        EXPECT_FALSE(reader.headers[3].m);
    }
}

TEST_F(RtpStreamTest, AudioForASink_IsSentWhileTheSinkListens)
{
    right_->setSink(&rightVoice_);
    sleepFor(kFiftyFrames);
    EXPECT_EQ(left_->unheard(), 0U);
    EXPECT_EQ(rightVoice_.written, 49);

    right_->catchUp();
    rightVoice_.listens = false;
    sleepFor(1s);
    left_->catchUp();

    EXPECT_EQ(left_->unheard(), 50U);
    EXPECT_EQ(rightVoice_.written, 49);
}

TEST_F(RtpStreamTest, AudioOfADynamicPayloadType_IsHeard)
{
    {
        std::lock_guard const lock(loop_);
        connect(*left_, *right_, 97);
        connect(*right_, *left_, 97);
        right_->setSink(&rightVoice_);
    }

    sleepFor(kFiftyFrames);

    EXPECT_EQ(rightVoice_.written, 49);
}

TEST_F(RtpStreamTest, AudioAndDigitsOfAStranger_AreNotHeard)
{
    std::string digits;
    RtpStream stranger(clock_, loopback(0));
    Voice strangersVoice;
    {
        std::lock_guard const lock(loop_);
        right_->setSink(&rightVoice_);
        right_->onDigit([&digits](char key) { digits += key; });
    }
    sleepFor(kFiftyFrames);
    {
        std::lock_guard const lock(loop_);
        stranger.setSource(&strangersVoice);
        connect(stranger, *right_);
        stranger.sendDigits("9", 100ms);
    }

    sleepFor(1s);

    std::lock_guard const lock(loop_);
    stranger.stop();
    EXPECT_EQ(digits, "");
    EXPECT_EQ(rightVoice_.written, 99);
    EXPECT_EQ(right_->statistics().received, 100U);
    EXPECT_EQ(right_->statistics().foreign, 47U);  // a digit and its pause take 11 beats, 8 of them with a packet
}

TEST_F(RtpStreamTest, ForgedAndReplayedPackets_ChangeNothing)
{
    CryptoKey const left{CryptoSuite::kAeadAes128Gcm, std::string(28, 'l')};
    CryptoKey const right{CryptoSuite::kAeadAes128Gcm, std::string(28, 'r')};
    CryptoKey const wrong{CryptoSuite::kAeadAes128Gcm, std::string(28, 'w')};
    RtpStream stranger(clock_, loopback(0));
    Voice strangersVoice;
    DatagramFaults::Id copies = 0;
    {
        std::lock_guard const lock(loop_);
        connect(*left_, *right_, 0, CryptoKeys{left, right});
        connect(*right_, *left_, 0, CryptoKeys{right, left});
        right_->setSink(&rightVoice_);
        connect(stranger, *right_, 0, CryptoKeys{wrong, wrong});
        stranger.setSource(&strangersVoice);
        copies = datagramFaults().begin({.fate = DatagramFate::kDoubled, .concerns = [this](Datagram const& datagram) {
                                             return datagram.from == "127.0.0.1:" + std::to_string(left_->localPort());
                                         }});
    }

    sleepFor(kFiftyFrames);

    std::lock_guard const lock(loop_);
    datagramFaults().end(copies);
    stranger.stop();
    EXPECT_EQ(right_->statistics().received, 50U);
    EXPECT_EQ(right_->statistics().replayed, 50U);
    EXPECT_EQ(right_->statistics().forged, 50U);
    EXPECT_EQ(right_->statistics().foreign, 0U);
    EXPECT_EQ(rightVoice_.written, 49);
}

TEST_F(RtpStreamTest, Ports_AreAnEvenOneAndTheNext)
{
    EXPECT_EQ(left_->localPort() % 2, 0);
    EXPECT_EQ(right_->localPort() % 2, 0);
    EXPECT_NE(left_->localPort(), right_->localPort());
}

TEST(RtpStreamInRealTime, Ports_AreAnEvenOneAndTheNext)
{
    EventLoop loop;
    loop.start();
    {
        std::lock_guard const lock(loop);
        MediaClock clock(loop);
        sa local{};
        sa_set_str(&local, "127.0.0.1", 0);
        std::vector<std::unique_ptr<RtpStream>> streams;
        for (int i = 0; i < 50; ++i) {
            streams.push_back(std::make_unique<RtpStream>(clock, local));

            EXPECT_EQ(streams.back()->localPort() % 2, 0);
            sa_set_port(&local, static_cast<std::uint16_t>(streams.back()->localPort() + 1));
            Ref<udp_sock> taken;
            EXPECT_EQ(udp_listen(taken.out(), &local, nullptr, nullptr), EADDRINUSE);
        }
    }
    loop.stop();
}

TEST_F(RtpStreamTest, LossJitterAndRoundTrip_AreKnownAtBothEnds)
{
    {
        std::lock_guard const lock(loop_);
        right_->setSink(&rightVoice_);
    }
    sleepFor(400ms);
    {
        std::lock_guard const lock(loop_);
        auto const isForTheRight = [to = addressText(loopback(right_->localPort()))](Datagram const& datagram) {
            return datagram.isRtp() && datagram.to == to;
        };
        datagramFaults().begin({.fate = DatagramFate::kLost, .concerns = isForTheRight, .count = 7});
    }

    sleepFor(11s);

    std::lock_guard const lock(loop_);
    auto const sent = left_->statistics();
    auto const heard = right_->statistics();
    EXPECT_EQ(heard.received, sent.sent - 7);
    EXPECT_EQ(heard.lost, 7U);
    EXPECT_EQ(heard.foreign, 0U);
    EXPECT_LT(heard.jitter, 1ms);
    EXPECT_EQ(sent.farLost, 7U);
    ASSERT_TRUE(sent.roundTrip);
    EXPECT_LT(*sent.roundTrip, 1ms);
}

TEST_F(RtpStreamTest, ReportsOfAStranger_AreCountedAndNotRead)
{
    sleepFor(6s);  // a report of the far end has come
    sa const reports = loopback(static_cast<std::uint16_t>(left_->localPort() + 1));
    Ref<udp_sock> stranger;
    sa local = loopback(0);
    Ref<mbuf> packet;
    {
        std::lock_guard const lock(loop_);
        ASSERT_EQ(udp_listen(stranger.out(), &local, nullptr, nullptr), 0);
        ASSERT_TRUE(fill(packet, "anything"));
        EXPECT_EQ(left_->statistics().foreign, 0U);
        EXPECT_EQ(udp_send(stranger.get(), &reports, packet.get()), 0);
        EXPECT_EQ(udp_send(stranger.get(), &reports, packet.get()), 0);
    }
    sleepFor(1ms);

    std::lock_guard const lock(loop_);
    EXPECT_EQ(left_->statistics().foreign, 2U);
    stranger.reset();
}

TEST_F(RtpStreamTest, ReportsOfAnEncryptedStream_AreEncryptedAndRead)
{
    CryptoKey const left{CryptoSuite::kAesCm128HmacSha1_80, std::string(30, 'l')};
    CryptoKey const right{CryptoSuite::kAesCm128HmacSha1_80, std::string(30, 'r')};
    std::vector<std::size_t> sizes;
    DatagramFaults::Id watch = 0;
    {
        std::lock_guard const lock(loop_);
        connect(*left_, *right_, 0, CryptoKeys{left, right});
        connect(*right_, *left_, 0, CryptoKeys{right, left});
        right_->setSink(&rightVoice_);
        watch = datagramFaults().begin({.concerns = [&sizes](Datagram const& datagram) {
            if (datagram.isMedia() && !datagram.isRtp()) {
                sizes.push_back(datagram.bytes.size());
            }
            return false;
        }});
    }

    sleepFor(6s);

    std::lock_guard const lock(loop_);
    datagramFaults().end(watch);
    // A sender report of 28 bytes and a receiver report of 32, each with a name of 28 and 14 of SRTCP.
    EXPECT_EQ(sizes, (std::vector<std::size_t>{70, 74}));
    EXPECT_EQ(left_->statistics().farLost, 0U);
    EXPECT_EQ(left_->statistics().forged, 0U);
}

TEST_F(RtpStreamTest, FarEndAtAnotherAddressThanDescribed_IsHeardAndAnswered)
{
    // What right has been told about left is wrong, as behind a NAT.
    SdpNegotiation::Agreement agreement;
    sa_set_str(&agreement.remote, "127.0.0.2", 9);
    agreement.direction = Direction::kSendReceive;
    agreement.codec = "PCMU";
    agreement.payloadType = 0;
    agreement.received[0] = Payload::kULaw;
    {
        std::lock_guard const lock(loop_);
        right_->apply(agreement);
        right_->setSink(&rightVoice_);
        left_->setSink(&leftVoice_);
    }

    sleepFor(kFiftyFrames);

    EXPECT_EQ(right_->statistics().foreign, 4U);
    EXPECT_EQ(rightVoice_.written, 45);
    EXPECT_GE(leftVoice_.written, 44);
}

TEST_F(RtpStreamTest, EchoOfWhatNobodyHears_IsNotSent)
{
    right_->setEcho(true);
    sleepFor(kFiftyFrames);
    left_->catchUp();
    EXPECT_EQ(left_->unheard(), 50U);

    left_->setSink(&leftVoice_);
    sleepFor(1s);

    EXPECT_EQ(left_->unheard(), 50U);
    EXPECT_GE(leftVoice_.written, 48);
}

TEST_F(RtpStreamTest, DigitsAreSent_ThoughNobodyHearsTheAudio)
{
    std::string heard;
    right_->onDigit([&heard](char key) { heard += key; });
    left_->sendDigits("12", 100ms);

    sleepFor(1s);
    left_->catchUp();

    EXPECT_EQ(heard, "12");
    EXPECT_GT(left_->unheard(), 0U);
}

}  // namespace
}  // namespace telephone::sip
