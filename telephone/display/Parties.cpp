#include "telephone/display/Parties.h"

#include "telephone/base/Names.h"
#include "telephone/display/SafeText.h"

namespace telephone {

namespace {

constexpr std::string_view kScheme = "sip:";
constexpr std::string_view kUsualPort = ":5060";

std::string_view withoutUsualPort(std::string_view domain)
{
    if (domain.ends_with(kUsualPort)) {
        domain.remove_suffix(kUsualPort.size());
    }
    return domain;
}

}  // namespace

std::string addressText(std::string_view address, DisplayOptions const& options)
{
    if (options.addresses || !beginsIgnoringCase(address, kScheme)) {
        return safeWord(address);
    }
    std::string_view const shortened = address.substr(kScheme.size());
    auto const at = shortened.rfind('@');
    if (at == std::string_view::npos || at == 0) {
        return safeWord(shortened);
    }
    std::string_view const host = shortened.substr(at + 1, shortened.find_first_of(";?", at) - at - 1);
    bool const isOwn = equalIgnoringCase(withoutUsualPort(host), withoutUsualPort(options.ownDomain));
    return safeWord(isOwn ? shortened.substr(0, at) : shortened.substr(0, at + 1 + host.size()));
}

std::string partyText(std::string_view address, std::string_view name, DisplayOptions const& options)
{
    std::string text = name.empty() ? "" : quotedText(name);
    if (!text.empty() && !address.empty()) {
        text += " ";
    }
    return text + addressText(address, options);
}

}  // namespace telephone
