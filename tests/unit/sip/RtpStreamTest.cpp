#include "telephone/sip/RtpStream.h"

#include <mutex>

#include <gtest/gtest.h>

#include "telephone/sip/EventLoop.h"
#include "telephone/time/VirtualTime.h"
#include "telephone/time/Waiting.h"

// Two streams of one process in virtual time, in which audio that nobody hears is not sent.
namespace telephone::sip {
namespace {

using namespace std::chrono_literals;

// From the start on; it ends between two frames.
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
    void writeFrame(AudioFrame const&) override { ++written; }
    bool isListening() const override { return listens; }

    int read = 0;
    int written = 0;
    bool listens = true;
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

    static sa loopback(std::uint16_t port)
    {
        sa address{};
        sa_set_str(&address, "127.0.0.1", port);
        return address;
    }
    static void connect(RtpStream& stream, RtpStream const& far, int payloadType = 0)
    {
        SdpNegotiation::Agreement agreement;
        agreement.remote = loopback(far.localPort());
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

TEST_F(RtpStreamTest, AudioThatNobodyHears_IsReadAndCountedOnly)
{
    sleepFor(kFiftyFrames);

    EXPECT_EQ(leftVoice_.read, 50);
    EXPECT_EQ(left_->unheard(), 50U);
}

TEST_F(RtpStreamTest, AudioForASink_IsSentWhileTheSinkListens)
{
    right_->setSink(&rightVoice_);
    sleepFor(kFiftyFrames);
    EXPECT_EQ(left_->unheard(), 0U);
    EXPECT_EQ(rightVoice_.written, 50);

    rightVoice_.listens = false;
    sleepFor(1s);

    EXPECT_EQ(left_->unheard(), 50U);
    EXPECT_EQ(rightVoice_.written, 50);
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

    EXPECT_EQ(rightVoice_.written, 50);
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
    EXPECT_EQ(rightVoice_.written, 100);
    EXPECT_EQ(right_->statistics().received, 100U);
    EXPECT_EQ(right_->statistics().foreign, 47U);  // a digit and its pause take 11 beats, 8 of them with a packet
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
    EXPECT_EQ(rightVoice_.written, 46);
    EXPECT_GE(leftVoice_.written, 44);
}

TEST_F(RtpStreamTest, EchoOfWhatNobodyHears_IsNotSent)
{
    right_->setEcho(true);
    sleepFor(kFiftyFrames);
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

    EXPECT_EQ(heard, "12");
    EXPECT_GT(left_->unheard(), 0U);
}

}  // namespace
}  // namespace telephone::sip
