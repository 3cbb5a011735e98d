// What differs between two states of a telephone, for people. Pure functions.
//
//     call 1: state: connected → held
//     line 4711, appearance 4711#2: state: idle → active
//     call 2: only in the second (ringing)
#pragma once

#include <string_view>

#include "telephone/base/Refusal.h"
#include "telephone/display/StateTables.h"

namespace telephone {

// The differences between two states as stateJson writes them, one a row. What is different at every moment does not
// count: the time, the number of the latest event, the id of the start, and since when something is so. Refused if one
// of the texts is not a state, saying which.
[[nodiscard]] Outcome<TableRows> stateDifferences(std::string_view first, std::string_view second);

}  // namespace telephone
