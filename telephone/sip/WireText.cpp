#include "telephone/sip/WireText.h"

#include <algorithm>

#include "telephone/sip/Sdes.h"

namespace telephone::sip {

namespace {

constexpr std::string_view kLineBreaks = "\r\n";
constexpr std::string_view kFolding = " \t\r\n";

bool isControl(char character)
{
    return static_cast<unsigned char>(character) < ' ' || character == '\x7f';
}

std::string inSmallLetters(std::string_view text)
{
    std::string small(text);
    std::ranges::transform(small, small.begin(), [](char each) {
        return each >= 'A' && each <= 'Z' ? static_cast<char>(each + ('a' - 'A')) : each;
    });
    return small;
}

}  // namespace

std::string unfolded(std::string_view value)
{
    std::string line;
    while (!value.empty()) {
        auto const lineEnd = std::min(value.find_first_of(kLineBreaks), value.size());
        line += value.substr(0, lineEnd);
        value.remove_prefix(lineEnd);
        if (!value.empty()) {
            line.erase(line.find_last_not_of(kFolding) + 1);
            line += ' ';
            value.remove_prefix(std::min(value.find_first_not_of(kFolding), value.size()));
        }
    }
    return line;
}

std::string plainText(std::string_view text)
{
    std::string plain = unfolded(text);
    std::ranges::replace_if(plain, isControl, ' ');
    std::ranges::replace(plain, '<', '(');
    std::ranges::replace(plain, '>', ')');
    return plain;
}

std::string withoutSecrets(std::string_view message)
{
    // Its value always stands in quotation marks (RFC 7616 section 3.4).
    constexpr std::string_view kResponse = "response=\"";
    std::string masked(message);
    std::string const small = inSmallLetters(message);
    // From the end, so that the places before stay where they are.
    for (auto at = small.rfind(kResponse); at != std::string::npos;
         at = at == 0 ? std::string::npos : small.rfind(kResponse, at - 1)) {
        auto const begin = at + kResponse.size();
        auto const end = std::min(small.find('"', begin), small.size());
        masked.replace(begin, end - begin, "***");
    }
    return maskedKeys(masked);
}

}  // namespace telephone::sip
