#include "telephone/applications/ApplicationProtocol.h"

#include <algorithm>
#include <charconv>

#include "telephone/time/TimeText.h"

namespace telephone {

void appendMessage(std::string& output, Message const& message)
{
    if (message.kind == MessageKind::kRequest) {
        return;
    }
    output += kMessageKindNames.at(static_cast<std::size_t>(message.kind));
    if (message.kind == MessageKind::kEvent) {
        output += ' ';
        output += std::to_string(message.number);
        output += message.time == Message{}.time ? "" : " " + timeText(message.time);
    }
    output += '\n';
    // A NUL would end the message early, and the application would read the rest as another message.
    output += message.text.substr(0, message.text.find(kMessageEnd));
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
    auto const* const name = std::find(kMessageKindNames.begin(), kMessageKindNames.end(), word);
    if (name == kMessageKindNames.end() || word == kMessageKindNames.front()) {
        return std::nullopt;
    }
    auto const kind = static_cast<MessageKind>(name - kMessageKindNames.begin());
    ApplicationMessage result{kind, 0, {}, std::string(message.substr(lineEnd + 1))};
    if (word.size() < head.size()) {
        char const* const end = head.data() + head.size();
        auto const number = std::from_chars(head.data() + word.size() + 1, end, result.number);
        bool const hasTime = number.ptr != end;
        result.time = hasTime ? readTime({number.ptr + 1, end}).value_or(result.time) : result.time;
    }
    return result;
}

}  // namespace telephone
