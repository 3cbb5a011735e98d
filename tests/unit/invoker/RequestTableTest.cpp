#include "src/RequestTable.h"

#include <string>

#include <gtest/gtest.h>

namespace {
TEST(RequestTable, Find_OfEveryDescribedName_GivesItsRow)
{
    for (auto const& description : kRequestDescriptions) {
        auto const* const row = RequestTable::find(description.name);
        ASSERT_NE(row, nullptr) << description.name;
        EXPECT_EQ(row->name, description.name);
    }
}

TEST(RequestTable, Find_OfANameWithOneLetterChanged_GivesNone)
{
    for (auto const& description : kRequestDescriptions) {
        for (std::size_t place = 0; place < description.name.size(); ++place) {
            std::string name(description.name);
            name[place] = static_cast<char>(name[place] ^ 0x20);
            EXPECT_EQ(RequestTable::find(name), nullptr) << name;
        }
    }
}

TEST(RequestTable, Find_OfALongerOrShorterName_GivesNone)
{
    for (auto const& description : kRequestDescriptions) {
        std::string const name(description.name);
        EXPECT_EQ(RequestTable::find(name + ' '), nullptr) << name;
        EXPECT_EQ(RequestTable::find(name + std::string(256, 'x')), nullptr) << name;
        EXPECT_EQ(RequestTable::find(name.substr(1)), nullptr) << name;
        EXPECT_EQ(RequestTable::find(name.substr(0, name.size() - 1)), nullptr) << name;
    }
}

TEST(RequestTable, Find_OfNothing_GivesNone)
{
    EXPECT_EQ(RequestTable::find(""), nullptr);
    EXPECT_EQ(RequestTable::find("\xff"), nullptr);
}

TEST(RequestTable, ThreeRequests_HaveNoAnswer)
{
    std::string silent;
    for (auto const& description : kRequestDescriptions) {
        if (!RequestTable::find(description.name)->answers) {
            silent += std::string(description.name) + " ";
        }
    }
    EXPECT_EQ(silent, "InitializeOrFinalizeServerFeatures setIsInServiceInitiatedState callbackDOFeatureCallID ");
}

TEST(RequestDescription, OfAnUnknownName_IsNone)
{
    EXPECT_EQ(findRequestDescription("HoldCal"), nullptr);
    EXPECT_EQ(findRequestDescription(""), nullptr);
    EXPECT_EQ(findRequestDescription("Consult")->name, "Consult");
}

TEST(RequestDescription, EveryRequestSaysWhatItMeans)
{
    for (auto const& description : kRequestDescriptions) {
        EXPECT_FALSE(description.meaning.empty()) << description.name;
        EXPECT_EQ(description.meaning.back(), '.') << description.name;
    }
}
}  // namespace
