// The messages on the application socket. Each message in either direction ends with one NUL byte.
//
// Applications send requests and commands. The telephone's messages have a first line with their kind, then a text.
//
//     answer\nsfiSuccess\0            the answer to a request; requests and commands are answered in their order
//     reason\na sentence\0            why the request was refused or did nothing; after its answer
//     finished\n\0                    a request is done; after its answer and reasons, or alone if it has none
//     event 7\n<Method>...\0          an event of Subscribe, and its number for this application
//     event 7 TIME\n<Method>...\0     an event of the command events, its number and the moment of its delivery
//     result\ntext or JSON\0          of a command
//     error\na sentence\0             the input was refused before it reached the service
//     gap\n{"first":1,"last":9}\0     events that are no longer kept; the state follows
//     state\n{...}\0                  the telephone after a gap
#pragma once

#include <cstddef>
#include <string>

#include "telephone/access/Message.h"

namespace telephone {

constexpr char kMessageEnd = '\0';
// The longest accepted request, in bytes without its NUL. A longer one is skipped and answered with an error.
constexpr std::size_t kLongestRequest = std::size_t{4} * 1024 * 1024;

// Appends one message with its NUL; nothing for a request, which only the console shows.
void appendMessage(std::string& output, Message const& message);

}  // namespace telephone
