// What the listeners to all calls hear, and which call sets their pace.
#include "telephone/calls/HeardMix.h"

#include <gtest/gtest.h>

namespace telephone::test {

namespace {

class Listener final : public sip::AudioSink
{
public:
    void writeFrame(sip::AudioFrame const& frame) override { text += std::to_string(frame[0]) + ' '; }

    std::string text;
};

class HeardMixTest : public ::testing::Test
{
protected:
    void SetUp() override { mix_.addListener(listener_); }

    static void hear(AudioTap& tap, std::int16_t sample)
    {
        sip::AudioFrame frame{};
        frame.fill(sample);
        tap.onFrame(frame, sip::AudioFrame{});
    }

    Listener listener_;
    HeardMix mix_;
};

}  // namespace

TEST_F(HeardMixTest, OneCall_IsHeardAtOnce)
{
    AudioTap& one = mix_.add(1);

    hear(one, 100);
    hear(one, 101);

    EXPECT_EQ(listener_.text, "100 101 ");
}

TEST_F(HeardMixTest, SecondCall_IsMixedIntoTheFirst)
{
    AudioTap& one = mix_.add(1);
    AudioTap& two = mix_.add(2);

    hear(one, 100);
    hear(two, 7);
    EXPECT_EQ(listener_.text, "100 ");
    hear(one, 101);

    EXPECT_EQ(listener_.text, "100 108 ");
}

TEST_F(HeardMixTest, CallWithThreeFramesWaiting_TakesTheLead)
{
    AudioTap& one = mix_.add(1);
    AudioTap& two = mix_.add(2);
    hear(one, 100);

    hear(two, 7);
    hear(two, 8);
    EXPECT_EQ(listener_.text, "100 ");
    hear(two, 9);
    EXPECT_EQ(listener_.text, "100 7 ");
    hear(one, 101);
    EXPECT_EQ(listener_.text, "100 7 ");
    hear(two, 10);

    EXPECT_EQ(listener_.text, "100 7 109 ");
}

TEST_F(HeardMixTest, CallThatLeads_LeavesTheLeadToTheNextWhenItEnds)
{
    AudioTap& one = mix_.add(1);
    AudioTap& two = mix_.add(2);
    hear(one, 100);
    hear(two, 7);

    mix_.remove(1);
    hear(two, 8);

    EXPECT_EQ(listener_.text, "100 7 ");
}

}  // namespace telephone::test
