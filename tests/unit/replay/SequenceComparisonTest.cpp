#include "telephone/replay/SequenceComparison.h"

#include <cctype>
#include <string>

#include <gtest/gtest.h>

using namespace telephone;

namespace {

// Of two texts: "ab" pairs, "a-" and "-b" single letters. A capital is similar to its small letter.
std::string paired(std::string const& recorded, std::string const& present)
{
    std::string text;
    auto const likeness = [&](std::size_t i, std::size_t j) {
        bool const isSame = std::tolower(recorded[i]) == std::tolower(present[j]);
        return recorded[i] == present[j] ? Likeness::kEqual : isSame ? Likeness::kSimilar : Likeness::kUnlike;
    };
    for (SequencePair const& each : pairSequences(recorded.size(), present.size(), likeness)) {
        text += each.recorded ? recorded[*each.recorded] : '-';
        text += each.present ? present[*each.present] : '-';
        text += ' ';
    }
    return text;
}

}  // namespace

TEST(SequenceComparison, EqualSequences_ArePairs)
{
    EXPECT_EQ(paired("", ""), "");
    EXPECT_EQ(paired("abc", "abc"), "aa bb cc ");
}

TEST(SequenceComparison, MissingEntry_LeavesTheOthersPairs)
{
    EXPECT_EQ(paired("abac", "bac"), "a- bb aa cc ");
    EXPECT_EQ(paired("abc", ""), "a- b- c- ");
}

TEST(SequenceComparison, SurplusEntry_LeavesTheOthersPairs)
{
    EXPECT_EQ(paired("abc", "abxc"), "aa bb -x cc ");
    EXPECT_EQ(paired("", "ab"), "-a -b ");
}

TEST(SequenceComparison, ChangedEntry_IsAPair)
{
    EXPECT_EQ(paired("abc", "aBc"), "aa bB cc ");
}

TEST(SequenceComparison, UnlikeEntries_AreNeverAPair)
{
    EXPECT_EQ(paired("axc", "ayc"), "aa x- -y cc ");
}

TEST(SequenceComparison, EqualEntryFartherAway_IsBetterThanASimilarOne)
{
    EXPECT_EQ(paired("aXbc", "axXbc"), "aa -x XX bb cc ");
}

TEST(SequenceComparison, VeryLongSequences_AreComparedInPart)
{
    std::string const present = "y" + std::string(3000, 'b') + "z";
    std::string const text = paired("x" + std::string(3000, 'a') + "z", present);

    EXPECT_EQ(text.substr(text.size() - 3), "zz ");
    EXPECT_EQ(text.size(), 3 * (3001 + 3001 + 1));
}
