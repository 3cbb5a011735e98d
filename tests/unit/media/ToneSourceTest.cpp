#include "telephone/media/ToneSource.h"

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

namespace telephone {
namespace {

TEST(ToneSourceTest, QuarterOfTheSampleRate_GoesThroughZeroAndBothPeaks)
{
    ToneSource tone(sip::kSampleRate / 4.0, 1000);
    sip::AudioFrame frame{};

    ASSERT_TRUE(tone.readFrame(frame));

    EXPECT_EQ(std::vector<int>(frame.begin(), frame.begin() + 5), (std::vector<int>{0, 1000, 0, -1000, 0}));
}

TEST(ToneSourceTest, NextFrame_ContinuesTheWave)
{
    ToneSource tone(sip::kSampleRate / 64.0, 1000);  // 2.5 periods per frame
    sip::AudioFrame first{};
    sip::AudioFrame second{};

    tone.readFrame(first);
    tone.readFrame(second);

    EXPECT_NEAR(second[0], -first[0], 1);
    EXPECT_NEAR(second[16], -first[16], 1);
    EXPECT_EQ(first[16], 1000);
}

TEST(ToneSourceTest, FrameAfterSkippedOnes_IsTheSameAsAfterReadOnes)
{
    ToneSource read;
    ToneSource skipped;
    sip::AudioFrame expected{};
    sip::AudioFrame frame{};

    for (int count = 0; count < 1001; ++count) {
        read.readFrame(expected);
    }
    skipped.skipFrames(1000);
    skipped.readFrame(frame);

    EXPECT_EQ(frame, expected);
}

TEST(ToneSourceTest, Amplitude_IsNotExceeded)
{
    ToneSource tone;
    sip::AudioFrame frame{};

    for (int count = 0; count < 50; ++count) {
        tone.readFrame(frame);
        auto const [lowest, highest] = std::minmax_element(frame.begin(), frame.end());
        EXPECT_GE(*lowest, -ToneSource::kAmplitude);
        EXPECT_LE(*highest, ToneSource::kAmplitude);
    }
}

}  // namespace
}  // namespace telephone
