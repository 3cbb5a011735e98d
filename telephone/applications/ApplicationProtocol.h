// What goes over the application socket. Every message, either way, ends with one NUL byte.
//
// To the telephone: a request. From the telephone: a first line that says what the message is, then its text.
//
//     answer\nsfiSuccess\0            the answer of a request; requests are answered in their order
//     finished\n\0                    a request is done; after its answer, or alone where it is never answered
//     event 7\n<Method>...\0          the application's seventh event; a gap in the numbers: events were dropped
//     error\nreason for a person\0    the telephone cannot take what came
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace telephone {

constexpr char kMessageEnd = '\0';
// The longest request that is taken, in bytes without its end. A longer one is answered with an error and skipped.
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

// Appends one message with its end.
void appendAnswer(std::string& output, std::string_view text);
void appendEvent(std::string& output, std::uint64_t number, std::string_view text);
void appendFinished(std::string& output);
void appendError(std::string& output, std::string_view reason);

// Reads a message, given without its end; nothing: it is none of the four.
std::optional<ApplicationMessage> parseApplicationMessage(std::string_view message);

}  // namespace telephone
