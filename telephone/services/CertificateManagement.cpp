#include "telephone/services/CertificateManagement.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <utility>

#include <spdlog/fmt/fmt.h>

#include "telephone/framework/Refusals.h"

namespace telephone {

namespace {

// The host of https://host:port/path, sip:user@host:port, host:port or [v6]:port.
std::string hostOf(std::string_view address)
{
    if (auto const scheme = address.find("://"); scheme != std::string_view::npos) {
        address.remove_prefix(scheme + 3);
    }
    address = address.substr(0, address.find_first_of("/?;"));
    if (auto const user = address.rfind('@'); user != std::string_view::npos) {
        address.remove_prefix(user + 1);
    }
    if (address.starts_with('[')) {
        return std::string(address.substr(1, address.find(']') - 1));
    }
    return std::string(address.substr(0, address.find(':')));
}

// A host cannot name another folder.
bool isPlainName(std::string const& host)
{
    return !host.empty() && host.front() != '.' &&
           std::none_of(host.begin(), host.end(), [](char c) { return c == '/' || c == '\0'; });
}

}  // namespace

CertificateManagement::CertificateManagement(CertificateConfiguration configuration)
    : configuration_(std::move(configuration))
{}

std::string CertificateManagement::trustedAuthoritiesFor(std::string const& address)
{
    auto const host = hostOf(address);
    if (!configuration_.folder.empty()) {
        std::filesystem::path const folder(configuration_.folder);
        std::error_code failed;
        for (auto const& name : {isPlainName(host) ? host : std::string("authorities"), std::string("authorities")}) {
            auto const file = folder / (name + ".pem");
            if (std::filesystem::is_regular_file(file, failed)) {
                return file.string();
            }
        }
    }
    reportRefusal("certificates",
                  {RefusalKind::kNotFound,
                   fmt::format("no authority is trusted for \"{}\": certificates.folder has no file for it", host)});
    return {};
}

}  // namespace telephone
