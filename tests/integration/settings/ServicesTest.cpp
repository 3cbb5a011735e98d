// The dial plan, the trusted authorities and the sound devices.
#include <gtest/gtest.h>

#include "telephone/services/AuditoryDevice.h"
#include "telephone/services/CertificateManagement.h"
#include "telephone/services/DigitAnalysis.h"
#include "tests/doubles/TemporaryFolder.h"

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

class CertificateManagementTest : public testing::Test
{
protected:
    CertificateManagementTest()
    {
        writeFile(folder.file("desk.example.pem"), "x");
        writeFile(folder.file("authorities.pem"), "y");
    }

    TemporaryFolder folder;
    CertificateManagement certificates{CertificateConfiguration{folder.path()}};
};

TEST_F(CertificateManagementTest, HostWithItsOwnFile_GetsThatFile)
{
    for (auto const* address : {"desk.example", "desk.example:443", "https://desk.example/push?x=1",
                                "https://user@desk.example:8443/", "sip:4711@desk.example"}) {
        EXPECT_EQ(certificates.trustedAuthoritiesFor(address), folder.file("desk.example.pem")) << address;
    }
}

TEST_F(CertificateManagementTest, AnyOtherAddress_GetsTheCommonFile)
{
    for (auto const* address : {"other.example", "https://[::1]:443/", "", "../desk.example", "/etc/passwd"}) {
        EXPECT_EQ(certificates.trustedAuthoritiesFor(address), folder.file("authorities.pem")) << address;
    }
}

TEST(CertificateManagementWithoutFolder, TrustsNobody)
{
    CertificateManagement certificates{CertificateConfiguration()};

    EXPECT_EQ(certificates.trustedAuthoritiesFor("desk.example"), "");
}

TEST(AuditoryDeviceTest, HeadsetAndRinging_AreKept)
{
    AuditoryDevice device;
    EXPECT_FALSE(device.isHeadsetUsed());
    EXPECT_FALSE(device.isRinging());

    device.useHeadset(true);
    device.setRinging(true);
    EXPECT_TRUE(device.isHeadsetUsed());
    EXPECT_TRUE(device.isRinging());

    device.shutdown();
    EXPECT_FALSE(device.isRinging());
}

}  // namespace
}  // namespace telephone
