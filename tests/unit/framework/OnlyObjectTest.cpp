#include "telephone/framework/OnlyObject.h"

#include <gtest/gtest.h>

namespace telephone {
namespace {

struct Clock
{
    OnlyObject<Clock> const only{*this, "a clock"};
};

TEST(OnlyObjectTest, Object_IsKnownWhileItLives)
{
    {
        Clock clock;
        EXPECT_EQ(OnlyObject<Clock>::get(), &clock);
    }
    EXPECT_EQ(OnlyObject<Clock>::get(), nullptr);
}

TEST(OnlyObjectTest, SecondObject_IsRefused_AndTheFirstStaysKnown)
{
    Clock first;

    EXPECT_THROW(Clock(), std::runtime_error);

    EXPECT_EQ(OnlyObject<Clock>::get(), &first);
}

}  // namespace
}  // namespace telephone
