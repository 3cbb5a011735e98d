#include "telephone/services/DigitAnalysis.h"

#include <gtest/gtest.h>

namespace telephone {
namespace {

class DigitAnalysisTest : public testing::Test
{
protected:
    static CallConfiguration calls()
    {
        CallConfiguration configuration;
        configuration.permittedNumbers = {"100", "0800*", "030-12 34"};
        configuration.emergencyNumbers = {"110", "112"};
        return configuration;
    }
    std::string flagOf(std::string const& number, std::string answer = "false")
    {
        analysis.queryNumberFlag(number, answer);
        return answer;
    }

    DigitAnalysis analysis{calls()};
};

TEST_F(DigitAnalysisTest, PermittedNumbers_AreThoseOfTheConfiguration)
{
    EXPECT_TRUE(analysis.isPermittedNumber("100"));
    EXPECT_TRUE(analysis.isPermittedNumber("110"));
    EXPECT_FALSE(analysis.isPermittedNumber("101"));
    EXPECT_FALSE(analysis.isPermittedNumber("1000"));
    EXPECT_FALSE(analysis.isPermittedNumber("10"));
    EXPECT_FALSE(analysis.isPermittedNumber(""));
}

TEST_F(DigitAnalysisTest, StarAtTheEnd_StandsForAnyDigits)
{
    EXPECT_TRUE(analysis.isPermittedNumber("0800"));
    EXPECT_TRUE(analysis.isPermittedNumber("0800123"));
    EXPECT_FALSE(analysis.isPermittedNumber("080"));
}

TEST_F(DigitAnalysisTest, AddressesAndSeparators_DoNotHideTheNumber)
{
    EXPECT_TRUE(analysis.isPermittedNumber("sip:100@127.0.0.1:5060"));
    EXPECT_TRUE(analysis.isPermittedNumber("sips:100@127.0.0.1"));
    EXPECT_TRUE(analysis.isPermittedNumber("tel:(030) 12.34;phone-context=+49"));
    EXPECT_TRUE(analysis.isPermittedNumber("0301234"));
    EXPECT_FALSE(analysis.isPermittedNumber("sip:999@100"));
}

TEST_F(DigitAnalysisTest, OtherContexts_PermitEmergencyNumbersOnly)
{
    EXPECT_TRUE(analysis.isPermittedNumberInContext("100", 0));
    EXPECT_FALSE(analysis.isPermittedNumberInContext("100", 1));
    EXPECT_TRUE(analysis.isPermittedNumberInContext("112", 1));
}

TEST_F(DigitAnalysisTest, EmergencyNumbers_AreFlagged)
{
    EXPECT_EQ(flagOf("110"), "true");
    EXPECT_EQ(flagOf("sip:112@exchange"), "true");
    EXPECT_EQ(flagOf("100"), "false");
    EXPECT_EQ(flagOf("100", "true"), "false");
    EXPECT_EQ(flagOf(""), "false");
}

TEST(DigitAnalysisWithoutNumbers, PermitsNothing)
{
    DigitAnalysis analysis{CallConfiguration()};

    EXPECT_FALSE(analysis.isPermittedNumber("110"));
}

}  // namespace
}  // namespace telephone
