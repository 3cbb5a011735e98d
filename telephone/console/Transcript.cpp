#include "telephone/console/Transcript.h"

#include <array>
#include <cstdio>

namespace telephone {

namespace {

constexpr std::size_t kMarkWidth = 9;

std::string printable(std::string_view text)
{
    std::string result;
    for (char const each : text) {
        auto const byte = static_cast<unsigned char>(each);
        if (byte >= 0x20 && byte != 0x7f) {
            result += each;
            continue;
        }
        std::array<char, 8> code{};
        std::snprintf(code.data(), code.size(), "\\x%02x", static_cast<unsigned>(byte));
        result += code.data();
    }
    return result;
}

// Without the trailing blanks of padded columns.
std::string row(std::string_view text)
{
    auto const last = text.find_last_not_of(' ');
    return printable(text.substr(0, last == std::string_view::npos ? 0 : last + 1));
}

}  // namespace

Transcript::Transcript(Writer writer)
    : writer_(std::move(writer))
{}

void Transcript::mark(std::string_view mark, std::string_view text)
{
    std::string line(mark);
    line.resize(std::max(line.size() + 1, kMarkWidth), ' ');
    writer_(line + printable(text));
}

void Transcript::note(std::string_view text)
{
    while (true) {
        auto const end = text.find('\n');
        writer_(row(text.substr(0, end)));
        if (end == std::string_view::npos) {
            return;
        }
        text.remove_prefix(end + 1);
    }
}

void Transcript::rows(std::vector<std::string> const& rows)
{
    for (std::string const& each : rows) {
        writer_(row(each));
    }
}

}  // namespace telephone
