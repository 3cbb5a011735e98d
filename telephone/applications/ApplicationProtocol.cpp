#include "telephone/applications/ApplicationProtocol.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace telephone {

namespace {

// Indexed by the kind.
constexpr std::array<std::string_view, 4> kNames{"answer", "event", "finished", "error"};

}  // namespace

void appendMessage(std::string& output, ApplicationMessageKind kind, std::string_view text, std::uint64_t number)
{
    output += kNames.at(static_cast<std::size_t>(kind));
    if (kind == ApplicationMessageKind::kEvent) {
        output += " " + std::to_string(number);
    }
    output += '\n';
    // A NUL would end the message early, and the application would read the rest as another message.
    output += text.substr(0, text.find(kMessageEnd));
    output += kMessageEnd;
}

std::optional<ApplicationMessage> parseApplicationMessage(std::string_view message)
{
    auto const lineEnd = message.find('\n');
    if (lineEnd == std::string_view::npos) {
        return std::nullopt;
    }
    std::string_view const head = message.substr(0, lineEnd);
    std::string_view const word = head.substr(0, head.find(' '));
    auto const name = std::find(kNames.begin(), kNames.end(), word);
    if (name == kNames.end()) {
        return std::nullopt;
    }
    auto const kind = static_cast<ApplicationMessageKind>(name - kNames.begin());
    ApplicationMessage result{kind, 0, std::string(message.substr(lineEnd + 1))};
    if (word.size() < head.size()) {
        std::from_chars(head.data() + word.size() + 1, head.data() + head.size(), result.number);
    }
    return result;
}

}  // namespace telephone
