// Recorded inputs as reports and replays see them. Pure functions.
#pragma once

#include <string>
#include <string_view>

#include "telephone/replay/Recording.h"

namespace telephone {

// Whether a command does something to the telephone that a replay repeats; those about the session, time, files and the
// program are left out.
[[nodiscard]] bool isReplayed(std::string_view command);

// The name of its request or command: "HoldCall", "store set".
[[nodiscard]] std::string inputName(RecordedInput const& input);
// The whole input: "HoldCall 4711 call 1".
[[nodiscard]] std::string inputInWords(RecordedInput const& input);

}  // namespace telephone
