#include "telephone/media/Mixing.h"

#include <gtest/gtest.h>

namespace telephone {
namespace {

TEST(MixingTest, Voices_AreAdded)
{
    sip::AudioFrame mix{100, -200, 300};
    sip::AudioFrame const voice{1, 2, -3};

    mixInto(mix, voice);

    EXPECT_EQ(mix, (sip::AudioFrame{101, -198, 297}));
}

TEST(MixingTest, SumBeyondTheRange_IsTheExtremeSample)
{
    sip::AudioFrame mix{32767, -32768, 32767};
    sip::AudioFrame const voice{1, -1, -32768};

    mixInto(mix, voice);

    EXPECT_EQ(mix, (sip::AudioFrame{32767, -32768, -1}));
}

}  // namespace
}  // namespace telephone
