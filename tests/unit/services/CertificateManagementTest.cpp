#include "telephone/services/CertificateManagement.h"

#include <gtest/gtest.h>

#include "tests/doubles/TemporaryFolder.h"

namespace telephone {
namespace {

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

}  // namespace
}  // namespace telephone
