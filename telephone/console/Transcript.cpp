#include "telephone/console/Transcript.h"

#include <spdlog/fmt/fmt.h>

namespace telephone {

namespace {

std::string printable(std::string_view text)
{
    std::string result;
    for (char const each : text) {
        auto const byte = static_cast<unsigned char>(each);
        bool const isControl = byte < 0x20 || byte == 0x7f;
        result += isControl ? fmt::format("\\x{:02x}", byte) : std::string(1, each);
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
    writer_(fmt::format("{:<8} {}", mark, printable(text)));
}

void Transcript::step(std::string_view text, double seconds)
{
    mark("passed", fmt::format("{}  {:.3f} s", text, seconds));
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
