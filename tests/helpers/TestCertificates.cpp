#include "tests/helpers/TestCertificates.h"

#include <cstdlib>
#include <stdexcept>

#include <unistd.h>

namespace telephone::test {

namespace {

constexpr char const* kNewKey = " -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes";

std::filesystem::path newFolder()
{
    std::string name = (std::filesystem::temp_directory_path() / "certificates-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no folder for certificates can be made");
    }
    return name;
}

}  // namespace

TestCertificates::TestCertificates()
    : folder_(newFolder())
{
    makeAuthority("Trusted Authority", "authorities");
}

TestCertificates::~TestCertificates()
{
    std::filesystem::remove_all(folder_);
}

void TestCertificates::run(std::string const& arguments) const
{
    std::string const command = "cd '" + folder_.string() + "' && openssl " + arguments + " 2>openssl.log";
    if (std::system(command.c_str()) != 0) {
        throw std::runtime_error("failed: " + command);
    }
}

void TestCertificates::makeAuthority(std::string const& name, std::string const& file)
{
    run("req -x509 -days 10 -subj '/CN=" + name + "' -keyout " + file + ".key -out " + file + ".pem" + kNewKey);
}

TestCertificates::Files TestCertificates::next()
{
    std::string const name = (folder_ / ("certificate" + std::to_string(++count_))).string();
    return {name + ".crt", name + ".key"};
}

TestCertificates::Files TestCertificates::makeFrom(std::string const& authority, std::string const& names, int days)
{
    auto const files = next();
    std::string const extension = names.empty() ? "" : " -addext 'subjectAltName=" + names + "'";
    run("req -new -subj /CN=test" + extension + " -keyout " + files.key + " -out request.csr" + kNewKey);
    run("x509 -req -in request.csr -copy_extensions copy -CAcreateserial -CA " + authority + ".pem -CAkey " +
        authority + ".key -days " + std::to_string(days) + " -out " + files.certificate);
    return files;
}

TestCertificates::Files TestCertificates::make(std::string const& names, int days)
{
    return makeFrom("authorities", names, days);
}

TestCertificates::Files TestCertificates::makeUntrusted(std::string const& names)
{
    makeAuthority("Strange Authority", "strange");
    return makeFrom("strange", names, 2);
}

TestCertificates::Files TestCertificates::makeSelfSigned(std::string const& names)
{
    auto const files = next();
    run("req -x509 -days 2 -subj /CN=test -addext 'subjectAltName=" + names + "' -keyout " + files.key + " -out " +
        files.certificate + kNewKey);
    return files;
}

}  // namespace telephone::test
