#include "platform/lines/ClientUtils.h"

#include <string>

#include <gtest/gtest.h>

namespace telephone {
namespace {

struct Split
{
    std::string base;
    int index;

    bool operator==(Split const&) const = default;
};

Split split(std::string const& device)
{
    Split result{"", 0};
    ClientUtils::splitMCADeviceIndex(device, result.base, result.index);
    return result;
}

TEST(ClientUtilsTest, Identifier_WithIndex_IsSplitAtTheLastHashSign)
{
    EXPECT_EQ(split("4711#2"), (Split{"4711", 2}));
    EXPECT_EQ(split("sip:4711@127.0.0.1#3"), (Split{"sip:4711@127.0.0.1", 3}));
    EXPECT_EQ(split("a#b#1"), (Split{"a#b", 1}));
    EXPECT_EQ(split("4711#255"), (Split{"4711", 255}));
}

TEST(ClientUtilsTest, Identifier_WithoutIndex_IsTheLineItself)
{
    EXPECT_EQ(split("4711"), (Split{"4711", 0}));
    EXPECT_EQ(split(""), (Split{"", 0}));
    EXPECT_EQ(split("#2"), (Split{"#2", 0}));
    EXPECT_EQ(split("4711#"), (Split{"4711#", 0}));
    EXPECT_EQ(split("4711#0"), (Split{"4711#0", 0}));
    EXPECT_EQ(split("4711#256"), (Split{"4711#256", 0}));
    EXPECT_EQ(split("4711#2x"), (Split{"4711#2x", 0}));
    EXPECT_EQ(split("4711#-1"), (Split{"4711#-1", 0}));
}

}  // namespace
}  // namespace telephone
