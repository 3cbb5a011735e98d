// Takes values out of texts: the text between two tags, a decimal number, a service state. Views in, values out, no
// state: any thread may call it.
#pragma once

#include <optional>
#include <string_view>

#include "platform/sfi/SfiTypes.h"

namespace tagged_text {
// What stands between the first opening tag and the first closing tag after it; nothing when either is missing.
std::optional<std::string_view> valueBetween(std::string_view opening, std::string_view message,
                                             std::string_view closing);

// A number as strtol reads it in base 10: leading blanks, a sign, digits; what follows is ignored, no digit is 0. Held
// to the range of 32 bits.
int decimal(std::string_view value);

// The state whose word stands between the tags. Less careful than valueBetween, and applications live with it: the
// closing tag is searched from the beginning of the message, and where it is missing or comes first the value runs to
// the end. Anything that is no word of a state, and a missing opening tag, is sfiServiceOutOfService.
sfiServiceState serviceStateBetween(std::string_view opening, std::string_view message, std::string_view closing);
}  // namespace tagged_text
