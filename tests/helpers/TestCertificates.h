// Certificates for TLS, made with openssl in a folder of their own that ends with the object. The folder serves as
// certificates.folder: its authorities.pem holds the one authority that is trusted.
#pragma once

#include <filesystem>
#include <string>

namespace telephone::test {

class TestCertificates
{
public:
    struct Files
    {
        std::string certificate;
        std::string key;
    };

    TestCertificates();
    ~TestCertificates();
    TestCertificates(TestCertificates const&) = delete;
    TestCertificates& operator=(TestCertificates const&) = delete;

    std::string folder() const { return folder_.string(); }
    std::string authorities() const { return (folder_ / "authorities.pem").string(); }

    // From the trusted authority. names: "IP:127.0.0.1", "DNS:a.example,DNS:b.example"; empty: only the common name,
    // "test". days: how long it is valid from
    // now; negative: it expired so many days ago.
    Files make(std::string const& names = "IP:127.0.0.1", int days = 2);
    // From an authority that nobody trusts.
    Files makeUntrusted(std::string const& names = "IP:127.0.0.1");
    Files makeSelfSigned(std::string const& names = "IP:127.0.0.1");

private:
    void makeAuthority(std::string const& name, std::string const& file);
    Files makeFrom(std::string const& authority, std::string const& names, int days);
    Files next();
    void run(std::string const& arguments) const;

    std::filesystem::path const folder_;
    int count_ = 0;
};

}  // namespace telephone::test
