#include "telephone/sip/Certificate.h"

#include <cstdio>
#include <memory>

#include <gtest/gtest.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include "tests/helpers/TestCertificates.h"

namespace telephone::sip {
namespace {

class CertificateTest : public ::testing::Test
{
protected:
    X509 const& certificateFor(std::string const& names)
    {
        auto const files = certificates_.make(names);
        std::unique_ptr<std::FILE, int (*)(std::FILE*)> const file(std::fopen(files.certificate.c_str(), "r"),
                                                                   &std::fclose);
        certificate_.reset(PEM_read_X509(file.get(), nullptr, nullptr, nullptr));
        return *certificate_;
    }

    test::TestCertificates certificates_;
    std::unique_ptr<X509, void (*)(X509*)> certificate_{nullptr, &X509_free};
};

TEST_F(CertificateTest, EveryKindOfName_Counts)
{
    auto const& certificate = certificateFor("URI:sip:pbx.example,DNS:b.example,IP:127.0.0.1,IP:::1");

    EXPECT_EQ(namesOf(certificate), (std::vector<std::string>{"pbx.example", "b.example", "127.0.0.1", "::1"}));
    EXPECT_TRUE(isFor(certificate, "pbx.example"));
    EXPECT_TRUE(isFor(certificate, "B.Example"));
    EXPECT_TRUE(isFor(certificate, "127.0.0.1"));
    EXPECT_TRUE(isFor(certificate, "0:0:0:0:0:0:0:1"));
    EXPECT_FALSE(isFor(certificate, "example"));
    EXPECT_FALSE(isFor(certificate, "test"));  // the common name
}

TEST_F(CertificateTest, UriOfAUserOrAnotherScheme_DoesNotCount)
{
    auto const& certificate = certificateFor("URI:sip:ann@a.example,URI:https://b.example,email:c@c.example");

    EXPECT_TRUE(namesOf(certificate).empty());
    EXPECT_EQ(wrongNameText("a.example", certificate), "the certificate of a.example is for nobody");
}

TEST_F(CertificateTest, Wildcard_MatchesOnlyItself)
{
    auto const& certificate = certificateFor("DNS:*.example");

    EXPECT_FALSE(isFor(certificate, "pbx.example"));
    EXPECT_EQ(wrongNameText("pbx.example", certificate), "the certificate of pbx.example is for *.example");
}

TEST_F(CertificateTest, CommonName_CountsWithoutAlternativeNames)
{
    auto const& certificate = certificateFor("");

    EXPECT_EQ(namesOf(certificate), std::vector<std::string>{"test"});
    EXPECT_TRUE(isFor(certificate, "test"));
}

}  // namespace
}  // namespace telephone::sip
