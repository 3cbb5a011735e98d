#include "telephone/media/FrameQueue.h"

#include <gtest/gtest.h>

namespace telephone {
namespace {

sip::AudioFrame frameOf(std::int16_t sample)
{
    sip::AudioFrame frame{};
    frame.fill(sample);
    return frame;
}

TEST(FrameQueueTest, Frames_LeaveInTheOrderOfTheirArrival)
{
    FrameQueue queue;
    queue.push(frameOf(1));
    queue.push(frameOf(2));
    sip::AudioFrame frame{};

    ASSERT_TRUE(queue.pop(frame));
    EXPECT_EQ(frame, frameOf(1));
    ASSERT_TRUE(queue.pop(frame));
    EXPECT_EQ(frame, frameOf(2));
}

TEST(FrameQueueTest, EmptyQueue_LeavesTheFrameUnchanged)
{
    FrameQueue queue;
    sip::AudioFrame frame = frameOf(7);

    EXPECT_FALSE(queue.pop(frame));
    EXPECT_EQ(frame, frameOf(7));
}

TEST(FrameQueueTest, FullQueue_LosesItsOldestFrame)
{
    FrameQueue queue;
    for (std::int16_t sample = 0; sample <= static_cast<std::int16_t>(FrameQueue::kCapacity); ++sample) {
        queue.push(frameOf(sample));
    }
    sip::AudioFrame frame{};

    EXPECT_EQ(queue.size(), FrameQueue::kCapacity);
    ASSERT_TRUE(queue.pop(frame));
    EXPECT_EQ(frame, frameOf(1));
}

TEST(FrameQueueTest, DroppedFrames_AreTheOldest)
{
    FrameQueue queue;
    for (std::int16_t sample = 1; sample <= 3; ++sample) {
        queue.push(frameOf(sample));
    }
    sip::AudioFrame frame{};

    queue.drop(2);
    ASSERT_TRUE(queue.pop(frame));
    EXPECT_EQ(frame, frameOf(3));

    queue.push(frameOf(4));
    queue.drop(1'000'000);
    EXPECT_FALSE(queue.pop(frame));
}

TEST(FrameQueueTest, ClearedQueue_IsEmpty)
{
    FrameQueue queue;
    queue.push(frameOf(1));
    sip::AudioFrame frame{};

    queue.clear();

    EXPECT_EQ(queue.size(), 0U);
    EXPECT_FALSE(queue.pop(frame));
}

}  // namespace
}  // namespace telephone
