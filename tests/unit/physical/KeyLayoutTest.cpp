#include "telephone/physical/KeyLayout.h"

#include <stdexcept>

#include <gtest/gtest.h>

namespace telephone {
namespace {

TEST(KeyLayoutTest, Layout_WithAnUnknownFunctionOrADuplicateNumber_IsRefused)
{
    Configuration configuration;
    configuration.keys = {{1, "fly", "", "", false}};
    EXPECT_THROW(KeyLayout{configuration}, std::runtime_error);
    configuration.keys = {{1, "hold", "", "", false}, {1, "mute", "", "", false}};
    EXPECT_THROW(KeyLayout{configuration}, std::runtime_error);
}

TEST(KeyLayoutTest, Layout_WithoutKeys_IsEmpty)
{
    KeyLayout const layout{Configuration{}};
    EXPECT_EQ(layout.find(1), nullptr);
    EXPECT_EQ(layout.find("hold"), nullptr);
    EXPECT_EQ(layout.range(), "none");
}

}  // namespace
}  // namespace telephone
