// Compares messages with the description of the protocol. The service silently gives wrong input a meaning; these
// functions say what is wrong with it, in one sentence with the nearest name. Pure functions.
#pragma once

#include <string_view>

#include "telephone/base/Refusal.h"

namespace telephone {

// A request as a careful sender writes it: its method exists, each element is a parameter of it and occurs once,
// required parameters are there, numbers are numbers within their range, flags are numbers, words are words of their
// enumeration. What follows the line of a request with a body may be anything. A notice of the signalling component
// ("SigEvent...") is not a request and passes.
[[nodiscard]] Outcome<> checkRequest(std::string_view text);

// The part of checkRequest that matters to a request which has succeeded all the same: that the service could use what
// is in it. Parameters may be missing, and numbers out of their range.
[[nodiscard]] Outcome<> checkForm(std::string_view text);

// An event as the service sends it: its method exists, all its elements are there in their order and nothing else,
// numbers are numbers, and values have a name.
[[nodiscard]] Outcome<> checkEvent(std::string_view text);

}  // namespace telephone
