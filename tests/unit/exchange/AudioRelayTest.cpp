#include "telephone/exchange/AudioRelay.h"

#include <gtest/gtest.h>

namespace telephone::exchange {
namespace {

TEST(AudioRelayTest, WrittenFrames_AreReadInOrder)
{
    AudioRelay relay;
    sip::AudioFrame first{1};
    sip::AudioFrame second{2};
    sip::AudioFrame read{};

    EXPECT_FALSE(relay.readFrame(read));
    relay.writeFrame(first);
    relay.writeFrame(second);

    ASSERT_TRUE(relay.readFrame(read));
    EXPECT_EQ(read, first);
    ASSERT_TRUE(relay.readFrame(read));
    EXPECT_EQ(read, second);
}

}  // namespace
}  // namespace telephone::exchange
