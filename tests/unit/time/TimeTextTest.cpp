#include "telephone/time/TimeText.h"

#include <gtest/gtest.h>

using namespace telephone;

TEST(TimeText, Moment_IsWrittenInUtcWithMilliseconds)
{
    std::chrono::system_clock::time_point const moment{std::chrono::milliseconds{1772366400007}};

    EXPECT_EQ(timeText(moment), "2026-03-01T12:00:00.007Z");
    EXPECT_EQ(readTime("2026-03-01T12:00:00.007Z"), moment);
}

TEST(TimeText, OtherTexts_AreNoMoments)
{
    for (char const* const text : {"", "now", "2026-03-01", "2026-03-01T12:00:00Z", "2026-13-01T12:00:00.000Z",
                                   "2026-03-01T12:00:00.000Z ", "2026-02-30T12:00:00.000Z"}) {
        EXPECT_EQ(readTime(text), std::nullopt) << text;
    }
}
