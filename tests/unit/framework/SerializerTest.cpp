#include "platform/framework/Serializer.h"

#include <gtest/gtest.h>

TEST(Serializer, Numbers_AreSeparatedByCommas)
{
    EXPECT_EQ(Serializer::serialize(std::vector<int>{1, -2, 300}), "1,-2,300");
}

TEST(Serializer, Texts_AreSeparatedByCommas)
{
    EXPECT_EQ(Serializer::serialize(std::vector<std::string>{"4711", "4712"}), "4711,4712");
}

TEST(Serializer, EmptyLists_AreTheEmptyText)
{
    EXPECT_EQ(Serializer::serialize(std::vector<int>{}), "");
    EXPECT_EQ(Serializer::serialize(std::vector<std::string>{}), "");
}

TEST(Serializer, CommaAndBackslashInAText_HaveABackslashBefore)
{
    EXPECT_EQ(Serializer::serialize(std::vector<std::string>{"a,b", "c\\d", ""}), "a\\,b,c\\\\d,");
}
