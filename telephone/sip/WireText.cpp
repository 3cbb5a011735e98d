#include "telephone/sip/WireText.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace telephone::sip {

namespace {

constexpr std::string_view kLineBreaks = "\r\n";
constexpr std::string_view kFolding = " \t\r\n";

// Where a secret begins, in small letters, and what ends it.
struct Secret
{
    std::string_view begin;
    std::string_view end;
};

constexpr std::array<Secret, 2> kSecrets{{
    {"response=\"", "\""},     // RFC 7616; its value always stands in quotation marks
    {"inline:", "| \t\r\n;"},  // RFC 4568
}};

bool isControl(char character)
{
    return static_cast<unsigned char>(character) < ' ' || character == '\x7f';
}

void mask(std::string& message, std::string const& small, Secret const& secret)
{
    // From the end, so that the places before stay where they are.
    for (auto at = small.rfind(secret.begin); at != std::string::npos;
         at = at == 0 ? std::string::npos : small.rfind(secret.begin, at - 1)) {
        auto const begin = at + secret.begin.size();
        auto const end = std::min(small.find_first_of(secret.end, begin), small.size());
        message.replace(begin, end - begin, "***");
    }
}

std::string inSmallLetters(std::string_view text)
{
    std::string small(text);
    std::ranges::transform(small, small.begin(),
                           [](unsigned char each) { return static_cast<char>(std::tolower(each)); });
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
    std::string masked(message);
    for (Secret const& secret : kSecrets) {
        mask(masked, inSmallLetters(masked), secret);
    }
    return masked;
}

}  // namespace telephone::sip
