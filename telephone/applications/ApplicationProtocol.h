// The messages on the application socket. Each message in either direction ends with one NUL byte.
//
// Applications send requests. The telephone's messages have a first line with their kind, then a text.
//
//     answer\nsfiSuccess\0            the answer to a request; requests are answered in their order
//     finished\n\0                    a request is done; follows its answer, or stands alone if it has none
//     event 7\n<Method>...\0          the application's seventh event; a gap in the numbers: events were dropped
//     error\nreason for a person\0    the telephone could not accept the input
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace telephone {

constexpr char kMessageEnd = '\0';
// The longest accepted request, in bytes without its NUL. A longer one is skipped and answered with an error.
constexpr std::size_t kLongestRequest = std::size_t{4} * 1024 * 1024;

enum class ApplicationMessageKind
{
    kAnswer,
    kEvent,
    kFinished,
    kError,
};

struct ApplicationMessage
{
    ApplicationMessageKind kind = ApplicationMessageKind::kError;
    std::uint64_t number = 0;  // of an event
    std::string text;
};

// Appends one message with its NUL. The number is that of an event.
void appendMessage(std::string& output, ApplicationMessageKind kind, std::string_view text, std::uint64_t number = 0);

// Parses a message without its NUL; nothing: not one of the four kinds.
std::optional<ApplicationMessage> parseApplicationMessage(std::string_view message);

}  // namespace telephone
