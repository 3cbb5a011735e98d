#include "telephone/sip/PlayoutBuffer.h"

#include <vector>

#include <gtest/gtest.h>

namespace telephone::sip {
namespace {

using namespace std::chrono_literals;

// Packets of 20 ms, of which number N has samples of the value 100 * N.
class Playout : public testing::Test
{
protected:
    void put(int number, std::uint32_t ssrc = 1, std::uint32_t start = 0)
    {
        std::vector<std::int16_t> const samples(160, static_cast<std::int16_t>(100 * number));
        buffer_.put({ssrc, static_cast<std::uint16_t>(number), start + static_cast<std::uint32_t>(160 * number)},
                    samples);
    }
    void putAll(std::vector<int> const& numbers)
    {
        for (int const number : numbers) {
            put(number);
        }
    }
    // The number of the frame that is played: kFilled for one that is faded, kNothing.
    static constexpr int kFilled = -1;
    static constexpr int kNothing = -2;
    int take()
    {
        AudioFrame frame{};
        if (!buffer_.take(frame)) {
            return kNothing;
        }
        return frame.front() == frame.back() ? frame.front() / 100 : kFilled;
    }
    std::vector<int> takeAll(int count)
    {
        std::vector<int> taken;
        for (int i = 0; i < count; ++i) {
            taken.push_back(take());
        }
        return taken;
    }
    // Each packet comes right after the beat before the one that plays it.
    void playEvenly(int first, int last)
    {
        for (int number = first; number <= last; ++number) {
            put(number);
            ASSERT_EQ(take(), number);
        }
    }

    PlayoutBuffer buffer_;
};

using Frames = std::vector<int>;

TEST_F(Playout, WithoutPackets_IsNothing)
{
    EXPECT_EQ(take(), kNothing);
}

TEST_F(Playout, PacketsThatComeEvenly_ArePlayedWithTheShortestDelay)
{
    playEvenly(1, 300);

    EXPECT_EQ(buffer_.delay(), 20ms);
}

TEST_F(Playout, PacketsOutOfOrderAndTwice_ArePlayedInOrderAndOnce)
{
    putAll({1, 3, 2, 3, 5, 4, 1});

    EXPECT_EQ(takeAll(5), (Frames{1, 2, 3, 4, 5}));
}

TEST_F(Playout, CopyOfWhatWasPlayed_ChangesNothing)
{
    playEvenly(1, 5);

    put(5);
    put(3);

    EXPECT_EQ(buffer_.delay(), 20ms);
    playEvenly(6, 10);
}

TEST_F(Playout, LostPacket_IsFilledWithWhatWasHeardLastAndFades)
{
    putAll({1, 2, 4, 5});
    ASSERT_EQ(takeAll(2), (Frames{1, 2}));

    AudioFrame filled{};
    ASSERT_TRUE(buffer_.take(filled));

    EXPECT_EQ(filled[0], 200);
    EXPECT_EQ(filled[80], 166);   // 200 * 400 / 480
    EXPECT_EQ(filled[159], 133);  // 200 * 321 / 480
    EXPECT_EQ(takeAll(2), (Frames{4, 5}));
}

TEST_F(Playout, LostPacket_IsFilledAtThePitchOfTheVoice)
{
    // A saw of 50 samples.
    std::vector<std::int16_t> saw(320);
    for (std::size_t i = 0; i < saw.size(); ++i) {
        saw[i] = static_cast<std::int16_t>(100 * (i % 50));
    }
    buffer_.put({1, 1, 160}, {saw.data(), 160});
    buffer_.put({1, 2, 320}, {saw.data() + 160, 160});
    buffer_.put({1, 4, 640}, {saw.data(), 160});
    AudioFrame frame{};
    ASSERT_TRUE(buffer_.take(frame));
    ASSERT_TRUE(buffer_.take(frame));

    ASSERT_TRUE(buffer_.take(frame));

    // It goes on where it was: at 20 of 50.
    EXPECT_EQ(frame[0], 2000);
    EXPECT_EQ(frame[29], 4603);  // 4900 * 451 / 480
    EXPECT_EQ(frame[30], 0);
}

TEST_F(Playout, LostPacketAtTheShortestDelay_IsFilledOnceAndDelaysNothing)
{
    playEvenly(1, 10);

    EXPECT_EQ(take(), kFilled);  // 11 is lost
    playEvenly(12, 20);

    EXPECT_EQ(buffer_.delay(), 20ms);
}

TEST_F(Playout, EndOfThePackets_FadesInThreeFrames)
{
    playEvenly(1, 2);

    EXPECT_EQ(takeAll(5), (Frames{kFilled, kFilled, kFilled, kNothing, kNothing}));
}

TEST_F(Playout, PauseOfTheSpeaker_DoesNotMakeTheDelayLonger)
{
    playEvenly(1, 2);
    takeAll(20);

    playEvenly(24, 30);

    EXPECT_EQ(buffer_.delay(), 20ms);
}

TEST_F(Playout, NetworkThatStoodStill_LosesNothingAndMakesTheDelayLonger)
{
    playEvenly(1, 2);
    ASSERT_EQ(takeAll(2), (Frames{kFilled, kFilled}));

    putAll({3, 4, 5});

    EXPECT_EQ(takeAll(3), (Frames{3, 4, 5}));
    EXPECT_EQ(buffer_.delay(), 60ms);
}

TEST_F(Playout, PacketAfterItsTime_MakesTheDelayLonger)
{
    putAll({1, 2, 4, 5});
    ASSERT_EQ(takeAll(3), (Frames{1, 2, kFilled}));

    put(3);

    EXPECT_EQ(takeAll(3), (Frames{kFilled, 4, 5}));
    EXPECT_EQ(buffer_.delay(), 40ms);
}

TEST_F(Playout, DelayThatIsNoLongerNeeded_BecomesShorterAfterFiveSeconds)
{
    putAll({1, 2, 4, 5});
    ASSERT_EQ(takeAll(3), (Frames{1, 2, kFilled}));
    put(3);
    ASSERT_EQ(buffer_.delay(), 40ms);
    ASSERT_EQ(take(), kFilled);

    int filled = 0;
    for (int number = 6; number <= 300; ++number) {
        put(number);
        EXPECT_EQ(buffer_.delay(), number < 255 ? 40ms : 20ms) << number;
        filled += take() == kFilled ? 1 : 0;
    }

    EXPECT_EQ(buffer_.delay(), 20ms);
    EXPECT_EQ(filled, 1) << "two frames in the time of one";
    EXPECT_EQ(take(), 300);
}

TEST_F(Playout, AudioThatWaitsForLongerThan220Milliseconds_IsSkippedButForTheLastFrame)
{
    putAll({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11});
    EXPECT_EQ(takeAll(11), (Frames{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));

    putAll({12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23});
    EXPECT_EQ(take(), 23);
}

TEST_F(Playout, NetworkThatStandsStillAgainAndAgain_MakesTheDelay200MillisecondsAtMost)
{
    std::vector<std::chrono::milliseconds> delays;
    int number = 0;
    for (int pause = 0; pause < 5; ++pause) {
        do {
            put(++number);
        } while (take() == kNothing);
        delays.push_back(buffer_.delay());
        while (take() != kNothing) {
        }
    }

    EXPECT_EQ(delays, (std::vector<std::chrono::milliseconds>{20ms, 80ms, 140ms, 200ms, 200ms}));
}

TEST_F(Playout, PacketUpTo400MillisecondsAhead_IsNoJump)
{
    playEvenly(1, 3);
    put(25);
    EXPECT_EQ(take(), kFilled) << "it is 420 ms ahead";

    put(24);
    EXPECT_EQ(take(), 24) << "it is 400 ms ahead";
}

TEST_F(Playout, AnotherSource_IsHeardFromItsThirdPacketInARow)
{
    playEvenly(1, 3);
    put(4);
    put(70, 2);
    put(71, 2);
    EXPECT_EQ(take(), 4);

    put(72, 2);

    EXPECT_EQ(take(), 72);
}

TEST_F(Playout, SourceBesideTheOther_IsNotHeard)
{
    for (int number = 1; number <= 50; ++number) {
        put(number);
        put(number + 200, 2);
        ASSERT_EQ(take(), number);
    }
}

TEST_F(Playout, JumpOfTheTimestamps_IsFollowedFromTheThirdPacketInARow)
{
    playEvenly(1, 3);
    put(4);
    put(5, 1, 1'000'000);
    put(6, 1, 1'000'000);
    EXPECT_EQ(take(), 4);

    put(7, 1, 1'000'000);

    EXPECT_EQ(take(), 7);
}

TEST_F(Playout, SinglePacketFarAway_IsDropped)
{
    playEvenly(1, 3);
    put(90, 1, 1'000'000);

    playEvenly(4, 10);
}

TEST_F(Playout, TimestampsAndSequence_MayBeginAnew)
{
    std::uint32_t const start = 0U - 160 * 5;
    for (int number = 1; number <= 20; ++number) {
        std::vector<std::int16_t> const samples(160, static_cast<std::int16_t>(100 * number));
        buffer_.put({1, static_cast<std::uint16_t>(65530 + number), start + static_cast<std::uint32_t>(160 * number)},
                    samples);
        EXPECT_EQ(take(), number);
    }
}

TEST_F(Playout, PacketsOfOtherLengths_BecomeFrames)
{
    std::vector<std::int16_t> const ten(80, 700);
    std::vector<std::int16_t> const thirty(240, 700);
    buffer_.put({1, 1, 0}, ten);
    EXPECT_EQ(take(), kNothing);
    buffer_.put({1, 2, 80}, ten);
    EXPECT_EQ(take(), 7);
    buffer_.put({1, 3, 160}, thirty);
    EXPECT_EQ(take(), 7);
    buffer_.put({1, 4, 400}, thirty);
    EXPECT_EQ(takeAll(2), (Frames{7, 7}));
}

TEST_F(Playout, ClearedBuffer_BeginsWithTheNextPacket)
{
    putAll({1, 2, 3});

    buffer_.clear();

    EXPECT_EQ(take(), kNothing);
    playEvenly(90, 92);
}

}  // namespace
}  // namespace telephone::sip
