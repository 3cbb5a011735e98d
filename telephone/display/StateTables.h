// The present state as tables for people, one row for each line, call, key or lamp. Pure functions.
//
//     4711     1001  ringing           from "Alice Example" 4713, 0:02
//       1  line        "4711"             [==  ==] G  flashing green     ringing
//
// A lamp is a picture of its cadence and a letter for its colour; the word behind it is what the lamp is about, where
// the state says so.
#pragma once

#include <string>
#include <vector>

#include "telephone/display/DisplayOptions.h"
#include "telephone/protocol/TelephoneState.h"

namespace telephone {

using TableRows = std::vector<std::string>;

// The lines with their appearances below them.
TableRows lineRows(TelephoneState const& state, DisplayOptions const& options);
TableRows callRows(TelephoneState const& state, DisplayOptions const& options);
// The keys with their functions, without the lamps outside the keys.
TableRows keyRows(TelephoneState const& state, DisplayOptions const& options);
TableRows lampRows(TelephoneState const& state, DisplayOptions const& options);

}  // namespace telephone
