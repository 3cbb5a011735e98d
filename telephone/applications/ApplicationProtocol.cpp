#include "telephone/applications/ApplicationProtocol.h"

#include <array>
#include <charconv>

namespace telephone {

namespace {

struct Name
{
    std::string_view name;
    ApplicationMessageKind kind;
};

constexpr std::array<Name, 4> kNames{{
    {"answer", ApplicationMessageKind::kAnswer},
    {"event", ApplicationMessageKind::kEvent},
    {"finished", ApplicationMessageKind::kFinished},
    {"error", ApplicationMessageKind::kError},
}};

// `head` includes its line end.
void append(std::string& output, std::string_view head, std::string_view text)
{
    output += head;
    // A NUL would end the message early, and the application would read the rest as another message.
    output += text.substr(0, text.find(kMessageEnd));
    output += kMessageEnd;
}

}  // namespace

void appendAnswer(std::string& output, std::string_view text)
{
    append(output, "answer\n", text);
}

void appendEvent(std::string& output, std::uint64_t number, std::string_view text)
{
    append(output, "event " + std::to_string(number) + '\n', text);
}

void appendFinished(std::string& output)
{
    append(output, "finished\n", {});
}

void appendError(std::string& output, std::string_view reason)
{
    append(output, "error\n", reason);
}

std::optional<ApplicationMessage> parseApplicationMessage(std::string_view message)
{
    auto const lineEnd = message.find('\n');
    if (lineEnd == std::string_view::npos) {
        return std::nullopt;
    }
    std::string_view const head = message.substr(0, lineEnd);
    std::string_view const word = head.substr(0, head.find(' '));
    for (Name const& each : kNames) {
        if (each.name != word) {
            continue;
        }
        ApplicationMessage result{each.kind, 0, std::string(message.substr(lineEnd + 1))};
        if (word.size() < head.size()) {
            std::from_chars(head.data() + word.size() + 1, head.data() + head.size(), result.number);
        }
        return result;
    }
    return std::nullopt;
}

}  // namespace telephone
