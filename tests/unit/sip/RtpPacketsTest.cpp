// The packets of a stream, byte by byte, and what it makes of those of others; in virtual time.
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "telephone/sip/EventLoop.h"
#include "telephone/sip/RtpStream.h"
#include "telephone/time/VirtualTime.h"
#include "telephone/time/Waiting.h"

namespace telephone::sip {
namespace {

using namespace std::chrono_literals;

// Always the same sample.
class Hum : public AudioSource
{
public:
    bool readFrame(AudioFrame& frame) override
    {
        frame.fill(sample);
        return speaks;
    }

    std::int16_t sample = 0;
    bool speaks = true;
};

class Listener : public AudioSink
{
public:
    void writeFrame(AudioFrame const& frame) override { frames.push_back(frame); }

    std::vector<AudioFrame> frames;
};

// A socket that keeps what it receives.
class RawEnd
{
public:
    RawEnd()
    {
        sa_set_str(&local_, "127.0.0.1", 0);
        auto const received = [](sa const*, mbuf* packet, void* object) {
            static_cast<RawEnd*>(object)->packets.push_back(remainingText(packet));
        };
        (void)udp_listen(socket_.out(), &local_, received, this);
        (void)udp_local_get(socket_.get(), &local_);
    }
    sa const& address() const { return local_; }
    void send(sa const& to, std::string const& bytes) const
    {
        Ref<mbuf> packet;
        EXPECT_TRUE(fill(packet, bytes));
        EXPECT_EQ(0, udp_send(socket_.get(), &to, packet.get()));
    }

    std::vector<std::string> packets;

private:
    sa local_{};
    Ref<udp_sock> socket_;
};

unsigned byteOf(std::string const& packet, std::size_t place)
{
    return static_cast<unsigned char>(packet.at(place));
}

unsigned wordOf(std::string const& packet, std::size_t place)
{
    return byteOf(packet, place) << 24 | byteOf(packet, place + 1) << 16 | byteOf(packet, place + 2) << 8 |
           byteOf(packet, place + 3);
}

class RtpPackets : public testing::Test
{
protected:
    RtpPackets()
    {
        loop_.start();
        std::lock_guard const lock(loop_);
        stream_ = std::make_unique<RtpStream>(clock_, far_.address());
        stream_->setSource(&hum_);
        stream_->setSink(&listener_);
        stream_->onDigit([this](char key) { digits_ += key; });
    }
    ~RtpPackets() override
    {
        {
            std::lock_guard const lock(loop_);
            stream_.reset();
        }
        loop_.stop();
    }

    void apply(Direction direction = Direction::kSendReceive, std::string const& codec = "PCMU")
    {
        SdpNegotiation::Agreement agreement;
        agreement.remote = far_.address();
        agreement.direction = direction;
        agreement.codec = codec;
        agreement.payloadType = codec == "PCMU" ? 0 : 8;
        agreement.received[0] = Payload::kULaw;
        agreement.received[8] = Payload::kALaw;
        agreement.received[101] = Payload::kEvents;
        agreement.eventPayloadType = 101;
        std::lock_guard const lock(loop_);
        stream_->apply(agreement);
    }
    // The packets of so many beats, the first of them the next one.
    std::vector<std::string> packetsOf(int beats)
    {
        sleepFor(beats * 20ms + (begun_ ? 0ms : 10ms));
        begun_ = true;
        std::lock_guard const lock(loop_);
        return std::exchange(far_.packets, {});
    }
    // A packet for the stream, numbered from 1 on.
    void send(int payloadType, std::uint32_t timestamp, std::string const& payload, char first = '\x80')
    {
        sa to = far_.address();
        sa_set_port(&to, stream_->localPort());
        std::string packet{first, static_cast<char>(payloadType), '\0', static_cast<char>(++sent_)};
        for (int shift = 24; shift >= 0; shift -= 8) {
            packet += static_cast<char>(timestamp >> shift & 0xffU);
        }
        std::lock_guard const lock(loop_);
        far_.send(to, packet + "ssrc" + payload);
    }
    // The digits so far.
    std::string digits()
    {
        sleepFor(1ms);
        std::lock_guard const lock(loop_);
        return std::exchange(digits_, {});
    }
    // The first samples of the frames that were heard so far.
    std::vector<int> heard()
    {
        std::lock_guard const lock(loop_);
        std::vector<int> samples;
        for (auto const& frame : std::exchange(listener_.frames, {})) {
            samples.push_back(frame.front());
        }
        return samples;
    }

    VirtualTime const time_{{}};
    EventLoop loop_;
    MediaClock clock_{loop_};
    RawEnd far_;
    Hum hum_;
    Listener listener_;
    std::unique_ptr<RtpStream> stream_;
    std::string digits_;
    bool begun_ = false;
    unsigned char sent_ = 0;
};

TEST_F(RtpPackets, Audio_IsAFrameWithItsNumberAndTime)
{
    hum_.sample = 1000;
    apply();

    auto const packets = packetsOf(3);

    ASSERT_EQ(packets.size(), 3U);
    EXPECT_EQ(byteOf(packets[0], 0), 0x80U);
    EXPECT_EQ(byteOf(packets[0], 1), 0x80U) << "the marker of a talkspurt, and PCMU";
    EXPECT_EQ(packets[0].substr(12), std::string(160, '\xce'));
    EXPECT_LT(byteOf(packets[0], 2), 0x80U) << "far from the end of the numbers";
    for (std::size_t i = 1; i < packets.size(); ++i) {
        EXPECT_EQ(byteOf(packets[i], 1), 0U);
        EXPECT_EQ((wordOf(packets[i], 0) - wordOf(packets[i - 1], 0)) & 0xffffU, 1U);
        EXPECT_EQ(wordOf(packets[i], 4) - wordOf(packets[i - 1], 4), 160U);
        EXPECT_EQ(packets[i].substr(8), packets[0].substr(8)) << "the source and the frame";
    }
}

TEST_F(RtpPackets, AudioInALaw_HasItsTypeAndSamples)
{
    hum_.sample = 1000;
    apply(Direction::kSendReceive, "PCMA");

    auto const packets = packetsOf(2);

    ASSERT_EQ(packets.size(), 2U);
    EXPECT_EQ(byteOf(packets[1], 1), 8U);
    EXPECT_EQ(packets[1].substr(12), std::string(160, '\xfa'));
}

TEST_F(RtpPackets, LoudestSample_KeepsItsSign)
{
    hum_.sample = -32768;
    apply();

    EXPECT_EQ(packetsOf(1).at(0).substr(12), std::string(160, '\0'));
}

TEST_F(RtpPackets, SourceThatGivesNothing_IsSilence)
{
    hum_.sample = 1000;
    hum_.speaks = false;
    apply();

    EXPECT_EQ(packetsOf(1).at(0).substr(12), std::string(160, '\xff'));
}

TEST_F(RtpPackets, Digit_IsRepeatedAsTheStandardSays)
{
    apply();
    packetsOf(2);
    stream_->sendDigits("#", 60ms);

    auto const packets = packetsOf(12);

    // Three beats of the digit, its end three times, a pause of three beats; then audio.
    ASSERT_EQ(packets.size(), 9U);
    std::vector<std::string> events;
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(byteOf(packets[i], 1), i == 0 ? 0xe5U : 0x65U) << i;
        EXPECT_EQ(wordOf(packets[i], 4), wordOf(packets[0], 4)) << i;
        events.push_back(packets[i].substr(12));
    }
    EXPECT_EQ(events,
              (std::vector<std::string>{std::string("\x0b\x0a\x00\xa0", 4), std::string("\x0b\x0a\x01\x40", 4),
                                        std::string("\x0b\x0a\x01\xe0", 4), std::string("\x0b\x8a\x01\xe0", 4),
                                        std::string("\x0b\x8a\x01\xe0", 4), std::string("\x0b\x8a\x01\xe0", 4)}));
    EXPECT_EQ(byteOf(packets[6], 1), 0x80U) << "a new talkspurt";
    EXPECT_EQ(wordOf(packets[6], 4) - wordOf(packets[0], 4), 9U * 160U);
    EXPECT_EQ(byteOf(packets[7], 1), 0U);
}

TEST_F(RtpPackets, DigitsOfAnyLength_TakeTwoTo250Beats)
{
    apply();
    packetsOf(1);
    stream_->sendDigits("1", 1ms);
    EXPECT_EQ(packetsOf(8).size(), 5U);
    stream_->sendDigits("2", 1min);
    auto const packets = packetsOf(256);

    ASSERT_EQ(packets.size(), 253U);
    EXPECT_EQ(packets.back().substr(12), std::string("\x02\x8a\x9c\x40", 4));
}

TEST_F(RtpPackets, OfAHeldStream_AreNone)
{
    apply(Direction::kReceiveOnly);
    EXPECT_FALSE(stream_->canSendDigits());
    EXPECT_TRUE(packetsOf(10).empty());
    apply(Direction::kSendOnly);
    EXPECT_TRUE(stream_->canSendDigits());
    auto const packets = packetsOf(2);

    ASSERT_EQ(packets.size(), 2U);
    EXPECT_EQ(byteOf(packets[0], 1), 0x80U) << "a new talkspurt";
    stream_->stop();
    EXPECT_FALSE(stream_->canSendDigits());
    EXPECT_TRUE(packetsOf(10).empty());
}

TEST_F(RtpPackets, DigitOfTheFarEnd_CountsOnce)
{
    apply();
    std::string const five("\x05\x0a\x00\xa0", 4);

    send(101, 800, five);
    send(101, 800, five);
    EXPECT_EQ(digits(), "5");
    send(101, 1600, five);
    EXPECT_EQ(digits(), "5");
    send(101, 2400, std::string("\x0f\x0a\x00\xa0", 4));
    EXPECT_EQ(digits(), "D");
    send(101, 3200, std::string("\x10\x0a\x00\xa0", 4));
    EXPECT_EQ(digits(), "") << "no key";
    send(101, 3200, std::string("\x01\x0a\x00", 3));
    EXPECT_EQ(digits(), "") << "too short";
    send(101, 3200, std::string("\x01\x0a\x00\xa0", 4), '\x40');
    EXPECT_EQ(digits(), "") << "another version";
    send(100, 3200, std::string("\x01\x0a\x00\xa0", 4));
    EXPECT_EQ(digits(), "") << "another type";
    send(101, 3200, std::string("\x01\x0a\x00\xa0", 4));
    EXPECT_EQ(digits(), "1");
}

TEST_F(RtpPackets, AudioOfTheFarEnd_IsHeardInBothCodecs)
{
    apply();
    packetsOf(1);
    for (std::uint32_t i = 0; i < 3; ++i) {
        send(i == 1 ? 8 : 0, 160 * i, std::string(160, i == 1 ? '\xfa' : '\xce'));
        packetsOf(1);
    }
    packetsOf(1);

    auto const samples = heard();
    ASSERT_GE(samples.size(), 3U);
    EXPECT_EQ(std::vector<int>(samples.begin(), samples.begin() + 3), (std::vector<int>{988, 1008, 988}));
    EXPECT_EQ(stream_->statistics().received, 3U);
}

TEST_F(RtpPackets, AudioThatIsTooLong_IsNotHeard)
{
    apply();
    packetsOf(1);

    send(0, 0, std::string(1601, '\xce'));
    packetsOf(3);
    EXPECT_TRUE(heard().empty());
    send(0, 16000, std::string(1600, '\xce'));
    packetsOf(3);
    EXPECT_FALSE(heard().empty());
}

TEST_F(RtpPackets, AudioWhileWeSendOnly_IsNotHeard)
{
    apply(Direction::kSendOnly);
    packetsOf(1);

    send(0, 0, std::string(160, '\xce'));
    packetsOf(3);

    EXPECT_TRUE(heard().empty());
    EXPECT_EQ(stream_->statistics().received, 1U);
}

TEST_F(RtpPackets, Echo_IsAFrameLate)
{
    apply();
    {
        std::lock_guard const lock(loop_);
        stream_->setEcho(true);
    }
    EXPECT_EQ(packetsOf(1).at(0).substr(12), std::string(160, '\xff')) << "nothing is heard yet";

    send(0, 0, std::string(160, '\xce'));

    auto const packets = packetsOf(3);
    ASSERT_EQ(packets.size(), 3U);
    EXPECT_NE(std::string::npos, (packets[0] + packets[1] + packets[2]).find(std::string(160, '\xce')));
}

}  // namespace
}  // namespace telephone::sip
