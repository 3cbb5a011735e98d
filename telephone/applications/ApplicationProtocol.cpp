#include "telephone/applications/ApplicationProtocol.h"

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

}  // namespace telephone
