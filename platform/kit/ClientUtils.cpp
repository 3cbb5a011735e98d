// Identifiers as the contract describes them: "4711#2" is the second appearance of line 4711.
#include "platform/lines/ClientUtils.h"

#include <charconv>

#include "platform/kit/Weak.h"

namespace {

constexpr int kLastAppearance = 255;

// 0 when the text from `start` on is not an index.
int appearanceIndex(std::string const& text, std::size_t start)
{
    int index = 0;
    char const* const end = text.data() + text.size();
    auto const [rest, error] = std::from_chars(text.data() + start, end, index);
    return error == std::errc() && rest == end && index >= 1 && index <= kLastAppearance ? index : 0;
}

}  // namespace

KIT_WEAK void ClientUtils::splitMCADeviceIndex(std::string const& lineURI, std::string& baseURI, int& index)
{
    auto const separator = lineURI.rfind('#');
    bool const hasLine = separator != std::string::npos && separator > 0;
    int const found = hasLine ? appearanceIndex(lineURI, separator + 1) : 0;
    baseURI = found == 0 ? lineURI : lineURI.substr(0, separator);
    index = found == 0 ? index : found;
}
