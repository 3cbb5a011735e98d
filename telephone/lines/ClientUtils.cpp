// A device identifier is the identifier of a line, followed for an appearance by a hash sign and the index: "4711#2" is
// the second appearance of line 4711. Anything else after the last hash sign is part of the line's identifier.
#include "platform/lines/ClientUtils.h"

#include <charconv>

namespace {

constexpr char kSeparator = '#';
constexpr int kLastAppearance = 255;

// 0 when the text from `start` on is not an index.
int appearanceIndex(std::string const& text, std::size_t start)
{
    int index = 0;
    char const* const end = text.data() + text.size();
    auto const [rest, error] = std::from_chars(text.data() + start, end, index);
    bool const isIndex = error == std::errc() && rest == end && index >= 1 && index <= kLastAppearance;
    return isIndex ? index : 0;
}

}  // namespace

void ClientUtils::splitMCADeviceIndex(std::string const& lineURI, std::string& baseURI, int& index)
{
    auto const separator = lineURI.rfind(kSeparator);
    int const found = separator == std::string::npos || separator == 0 ? 0 : appearanceIndex(lineURI, separator + 1);
    if (found == 0) {
        baseURI = lineURI;
        return;
    }
    index = found;
    baseURI = lineURI.substr(0, separator);
}
