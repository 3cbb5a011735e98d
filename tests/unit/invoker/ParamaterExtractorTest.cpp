#include "ParamaterExtractor.h"

#include <string>
#include <type_traits>

#include <gtest/gtest.h>

namespace {
struct Pair
{
    std::string text;
    std::string key;
    std::string value;
    int number;
};

class PairExtractor : public testing::TestWithParam<Pair>
{};

TEST_P(PairExtractor, GivesTheWrittenValues)
{
    ParamaterExtractor const extractor(GetParam().text);

    EXPECT_EQ(extractor.getParamaterAsString(GetParam().key), GetParam().value);
    EXPECT_EQ(extractor.getParamaterAsLong(GetParam().key), GetParam().number);
}

INSTANTIATE_TEST_SUITE_P(
    All, PairExtractor,
    testing::Values(Pair{"a=1::b=22", "a", "1", 1}, Pair{"a=1::b=22", "b", "22", 22}, Pair{"a=1::b=22", "z", "", 0},
                    Pair{"a=1::b=22", "", "", 0}, Pair{"", "a", "", 0}, Pair{"", "", "", 0}, Pair{"=1", "", "", 0},
                    Pair{":::a=1", "a", "1", 1}, Pair{"a=1:::", "a", "1", 1}, Pair{":::", "a", "", 0},
                    Pair{"a=", "a", "", 0}, Pair{"a", "a", "", 0}, Pair{"a:=1", "a", "", 0}, Pair{"A=1", "a", "", 0},
                    // the key may be anywhere in the pair; the cut is made at its front
                    Pair{"a=7", "a", "7", 7}, Pair{"xa=7", "a", "=7", 0}, Pair{"xxa=7", "a", "a=7", 0},
                    Pair{"b=a=7", "a", "a=7", 0}, Pair{"long=1:g=2", "g", "ng=1", 0},
                    // the first pair that contains it applies
                    Pair{"a=1:a=2", "a", "1", 1}, Pair{"xa=1:a=2", "a", "=1", 0}, Pair{"a=-12", "a", "-12", -12},
                    Pair{"a= 12x", "a", " 12x", 12}, Pair{"a=x", "a", "x", 0}, Pair{"a=b=c", "a", "b=c", 0},
                    Pair{"a=1", "a=1", "", 0}, Pair{"a=b=1", "a=b", "1", 1},
                    Pair{"a=99999999999", "a", "99999999999", 2147483647},
                    Pair{"a=-99999999999", "a", "-99999999999", -2147483647 - 1},
                    Pair{std::string("a=1\0:b=2", 8), "a", "1", 1}, Pair{std::string("a=1\0:b=2", 8), "b", "", 0},
                    Pair{"a=1:b=2", "1:b", "", 0}));

TEST(PairExtractor, TextOfOneThousandPairs_IsReadToItsEnd)
{
    std::string text;
    for (int index = 0; index < 1000; ++index) {
        text += "key" + std::to_string(index) + "x=" + std::to_string(index) + ":";
    }
    ParamaterExtractor const extractor(text);

    EXPECT_EQ(extractor.getParamaterAsString("key999x"), "999");
    EXPECT_EQ(extractor.getParamaterAsLong("key500x"), 500);
}

TEST(PairExtractor, KeepsItsOwnCopyOfTheText)
{
    std::string text = "a=1";
    ParamaterExtractor const extractor(text);
    text = "a=2";

    EXPECT_EQ(extractor.getParamaterAsString("a"), "1");
    EXPECT_EQ(extractor.getParamaterAsString("a"), "1");
}

static_assert(std::has_virtual_destructor_v<ParamaterExtractor>);
static_assert(!std::is_convertible_v<std::string, ParamaterExtractor>);
static_assert(std::is_constructible_v<ParamaterExtractor, std::string const&>);
}  // namespace
