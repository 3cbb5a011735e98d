// The audio of a call without a stream: what it sends, and what the calls of a conference and the taps hear.
#include "telephone/calls/CallAudio.h"

#include <gtest/gtest.h>

namespace telephone::test {

namespace {

sip::AudioFrame frameOf(int sample)
{
    sip::AudioFrame frame{};
    frame.fill(static_cast<std::int16_t>(sample));
    return frame;
}

// Says 10, 11, 12 ...
class Voice final : public sip::AudioSource
{
public:
    bool readFrame(sip::AudioFrame& frame) override
    {
        frame = frameOf(next_++);
        return true;
    }
    void skipFrames(std::uint64_t count) override { next_ += static_cast<int>(count); }

private:
    int next_ = 10;
};

class Tap final : public AudioTap
{
public:
    void onFrame(sip::AudioFrame const& heard, sip::AudioFrame const& sent) override
    {
        text += std::to_string(heard[0]) + '/' + std::to_string(sent[0]) + ' ';
    }

    std::string text;
};

// The first sample of the next frame that is sent; "-" and it, if the frame is silence that need not be sent.
std::string nextOf(CallAudio& audio)
{
    sip::AudioFrame frame{};
    bool const sound = audio.readFrame(frame);
    return (sound ? "" : "-") + std::to_string(frame[0]);
}

class CallAudioTest : public ::testing::Test
{
protected:
    CallAudio one_{std::make_unique<Voice>()};
    CallAudio other_{nullptr};
};

}  // namespace

TEST_F(CallAudioTest, OwnVoice_IsSentWhileItIsOn)
{
    EXPECT_EQ(nextOf(one_), "-0");

    one_.setVoice(true, true);
    EXPECT_EQ(nextOf(one_), "10");
    one_.skipFrames(3);
    EXPECT_EQ(nextOf(one_), "14");

    one_.setVoice(false, true);
    one_.skipFrames(3);
    EXPECT_EQ(nextOf(one_), "-0");
    one_.setVoice(true, false);
    EXPECT_EQ(nextOf(one_), "15");
}

TEST_F(CallAudioTest, JoinedCalls_HearEachOtherUntilOneLeaves)
{
    one_.setVoice(true, true);
    other_.setVoice(false, true);
    CallAudio::join(one_, other_);
    CallAudio::join(one_, other_);

    one_.writeFrame(frameOf(500));
    other_.writeFrame(frameOf(300));
    EXPECT_EQ(nextOf(one_), "310");
    EXPECT_EQ(nextOf(other_), "500");
    EXPECT_EQ(nextOf(other_), "-0");

    one_.writeFrame(frameOf(501));
    other_.leave();
    other_.writeFrame(frameOf(301));
    EXPECT_EQ(nextOf(one_), "11");
    EXPECT_EQ(nextOf(other_), "-0");
    EXPECT_FALSE(one_.isListening());
}

TEST_F(CallAudioTest, CallThatHearsNoOthers_LosesWhatTheySaid)
{
    CallAudio::join(one_, other_);
    one_.writeFrame(frameOf(500));
    EXPECT_EQ(nextOf(other_), "-0");

    other_.setVoice(false, true);
    one_.writeFrame(frameOf(501));

    EXPECT_EQ(nextOf(other_), "501");
}

TEST_F(CallAudioTest, SkippedFrames_AreMissingOfTheOthersToo)
{
    other_.setVoice(false, true);
    CallAudio::join(one_, other_);
    for (int const sample : {500, 501, 502, 503}) {
        one_.writeFrame(frameOf(sample));
    }

    other_.skipFrames(2);

    EXPECT_EQ(nextOf(other_), "502");
    EXPECT_EQ(nextOf(other_), "503");
    EXPECT_EQ(nextOf(other_), "-0");
}

TEST_F(CallAudioTest, Tap_IsToldOnceForAFrame)
{
    Tap tap;
    one_.addTap(tap);
    one_.addTap(tap);
    EXPECT_TRUE(one_.isListening());

    one_.writeFrame(frameOf(500));
    EXPECT_EQ(tap.text, "500/0 ");

    one_.removeTap(tap);
    one_.writeFrame(frameOf(501));
    EXPECT_EQ(tap.text, "500/0 ");
    EXPECT_FALSE(one_.isListening());
}

}  // namespace telephone::test
