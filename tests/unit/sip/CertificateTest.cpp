#include "telephone/sip/Certificate.h"

#include <array>
#include <cstdio>
#include <memory>

#include <gtest/gtest.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

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

    using Certificate = std::unique_ptr<X509, void (*)(X509*)>;
    static Certificate emptyCertificate() { return {X509_new(), &X509_free}; }

    test::TestCertificates certificates_;
    Certificate certificate_{nullptr, &X509_free};
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
    auto const& certificate =
        certificateFor("URI:sip:ann@a.example,URI:https://b.example,URI:nonsense,email:c@c.example");

    EXPECT_TRUE(namesOf(certificate).empty());
    EXPECT_EQ(wrongNameText("a.example", certificate), "the certificate of a.example is for nobody");
}

TEST_F(CertificateTest, Wildcard_MatchesOnlyItself)
{
    auto const& certificate = certificateFor("DNS:*.example");

    EXPECT_FALSE(isFor(certificate, "pbx.example"));
    EXPECT_EQ(wrongNameText("pbx.example", certificate), "the certificate of pbx.example is for *.example");
}

TEST_F(CertificateTest, SeveralNames_AreAllToldToWhoeverExpectsAnother)
{
    auto const& certificate = certificateFor("DNS:a.example,DNS:b.example,IP:::1");

    EXPECT_EQ(wrongNameText("pbx.example", certificate),
              "the certificate of pbx.example is for a.example and b.example and ::1");
}

TEST_F(CertificateTest, AddressOfAnotherLength_DoesNotCount)
{
    auto const certificate = emptyCertificate();
    auto* const names = GENERAL_NAMES_new();
    auto* const name = GENERAL_NAME_new();
    auto* const bytes = ASN1_OCTET_STRING_new();
    ASN1_OCTET_STRING_set(bytes, reinterpret_cast<unsigned char const*>("\1\2\3\4\5"), 5);
    GENERAL_NAME_set0_value(name, GEN_IPADD, bytes);
    sk_GENERAL_NAME_push(names, name);
    X509_add1_ext_i2d(certificate.get(), NID_subject_alt_name, names, 0, 0);
    GENERAL_NAMES_free(names);

    EXPECT_EQ(namesOf(*certificate), std::vector<std::string>());
}

TEST_F(CertificateTest, WithoutAnyName_IsForNobody)
{
    EXPECT_EQ(namesOf(*emptyCertificate()), std::vector<std::string>());
}

TEST_F(CertificateTest, Refusal_SaysWhatIsWrongWithWhichCertificate)
{
    struct Row
    {
        int error;
        int depth;
        char const* text;
    };
    constexpr auto kRows = std::to_array<Row>({
        {X509_V_ERR_CERT_HAS_EXPIRED, 0, "the certificate of pbx.example expired on 2024-02-29"},
        {X509_V_ERR_CERT_HAS_EXPIRED, 1, "the certificate of an authority of pbx.example expired on 2024-02-29"},
        {X509_V_ERR_CERT_NOT_YET_VALID, 0, "the certificate of pbx.example is not valid before 2023-12-31"},
        {X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT, 1,
         "the certificate of an authority of pbx.example is from an unknown authority, \"Root\""},
        {X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY, 0,
         "the certificate of pbx.example is from an unknown authority, \"Root\""},
        {X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE, 0,
         "the certificate of pbx.example is from an unknown authority, \"Root\""},
        {X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN, 2,
         "the certificate of an authority of pbx.example is from an unknown authority, \"Root\""},
        {X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT, 0,
         "the certificate of pbx.example is signed by itself and not by a trusted authority"},
        {X509_V_ERR_CERT_REVOKED, 0, "the certificate of pbx.example is not accepted: certificate revoked"},
    });
    auto const certificate = emptyCertificate();
    ASN1_TIME_set_string(X509_getm_notBefore(certificate.get()), "20231231235959Z");
    ASN1_TIME_set_string(X509_getm_notAfter(certificate.get()), "20240229000000Z");
    X509_NAME_add_entry_by_txt(X509_get_issuer_name(certificate.get()), "O", MBSTRING_ASC,
                               reinterpret_cast<unsigned char const*>("Company"), -1, -1, 0);
    X509_NAME_add_entry_by_txt(X509_get_issuer_name(certificate.get()), "CN", MBSTRING_ASC,
                               reinterpret_cast<unsigned char const*>("Root"), -1, -1, 0);
    std::unique_ptr<X509_STORE_CTX, void (*)(X509_STORE_CTX*)> const verification(X509_STORE_CTX_new(),
                                                                                  &X509_STORE_CTX_free);
    X509_STORE_CTX_set_current_cert(verification.get(), certificate.get());
    for (auto const& row : kRows) {
        X509_STORE_CTX_set_error(verification.get(), row.error);
        X509_STORE_CTX_set_error_depth(verification.get(), row.depth);
        EXPECT_EQ(verificationText("pbx.example", *verification), row.text);
    }
}

TEST_F(CertificateTest, DayThatIsNotADate_IsUnknown)
{
    auto const certificate = emptyCertificate();
    ASN1_STRING_set(X509_getm_notAfter(certificate.get()), "soon", 4);
    std::unique_ptr<X509_STORE_CTX, void (*)(X509_STORE_CTX*)> const verification(X509_STORE_CTX_new(),
                                                                                  &X509_STORE_CTX_free);
    X509_STORE_CTX_set_current_cert(verification.get(), certificate.get());
    X509_STORE_CTX_set_error(verification.get(), X509_V_ERR_CERT_HAS_EXPIRED);

    EXPECT_EQ(verificationText("pbx.example", *verification),
              "the certificate of pbx.example expired on an unknown day");
}

TEST_F(CertificateTest, CommonName_CountsWithoutAlternativeNames)
{
    auto const& certificate = certificateFor("");

    EXPECT_EQ(namesOf(certificate), std::vector<std::string>{"test"});
    EXPECT_TRUE(isFor(certificate, "test"));
}

}  // namespace
}  // namespace telephone::sip
