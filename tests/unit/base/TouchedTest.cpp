#include "telephone/base/Touched.h"

#include <gtest/gtest.h>

using namespace telephone;

namespace {

using Names = std::set<std::string>;

}  // namespace

TEST(Touched, BeforeItIsAskedFor_NothingIsKept)
{
    touch(Touched::kKey, "hold");
    touch(PhoneTimer::kNoReply);
    EXPECT_EQ(touchedNames(Touched::kKey), Names{});

    keepTouched();
    touch(Touched::kKey, "mute");
    touch(Touched::kKey, "mute");
    touch(PhoneTimer::kRegistrationRefresh);
    touch(PhoneTimer::kService);

    EXPECT_EQ(touchedNames(Touched::kKey), Names{"mute"});
    EXPECT_EQ(touchedNames(Touched::kTimer), (Names{"registration is refreshed", "timer of the service"}));
    EXPECT_EQ(touchedNames(Touched::kLamp), Names{});
}

TEST(Touched, TimerNames_AreDifferent)
{
    Names const names(kPhoneTimerNames.begin(), kPhoneTimerNames.end());

    EXPECT_EQ(names.size(), kPhoneTimerNames.size());
    EXPECT_FALSE(names.contains(""));
}
