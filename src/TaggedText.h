// Reads values from texts: the text between two tags, a decimal number, a service state. There is no state: any thread
// may call these functions.
#pragma once

#include <optional>
#include <string_view>

#include "platform/sfi/SfiTypes.h"

namespace tagged_text {
// The text between the first opening tag and the first closing tag after it; nothing when either is missing.
std::optional<std::string_view> valueBetween(std::string_view opening, std::string_view message,
                                             std::string_view closing);

// A number as strtol reads it in base 10: leading blanks, a sign, digits; anything after them is ignored, and no digits
// read as 0. Held to the range of 32 bits.
int decimal(std::string_view value);

// The state whose word is between the tags. Less strict than valueBetween, and applications rely on it: the closing tag
// is searched for from the beginning of the message; when it is missing or comes first, the value runs to the end. An
// unknown word or a missing opening tag reads as sfiServiceOutOfService.
sfiServiceState serviceStateBetween(std::string_view opening, std::string_view message, std::string_view closing);
}  // namespace tagged_text
