// The commands `state save` and `state diff`: states of the telephone in files, as stateJson writes them. Any thread.
#pragma once

#include <string>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/protocol/TelephoneState.h"

namespace telephone {

// Stands for the present state in place of a file.
inline constexpr char const* kPresentState = "now";

// Writes a state, in place of a file of that name. Refused if the file cannot be written.
[[nodiscard]] Outcome<> saveState(TelephoneState const& state, std::string const& file);

// What differs between two states, a row each (StateDifference.h). Refused for a file that cannot be read or has no
// state.
[[nodiscard]] Outcome<std::vector<std::string>> compareStates(std::string const& first, std::string const& second,
                                                              TelephoneState const& present);

}  // namespace telephone
