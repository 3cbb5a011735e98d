// The lines of a telephone as a person names them. Pure functions.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "telephone/protocol/TelephoneState.h"

namespace telephone {

// The id of the line or appearance with that id or user; empty: there is none.
std::string_view placeNamed(TelephoneState const& state, std::string_view name);

// "the lines are 4711 and 4712", behind a name that is not one of them.
std::string linesThatAre(TelephoneState const& state);

// "2", "2 and 3", "2, 3 and 4".
std::string listed(std::vector<std::string> const& items);

}  // namespace telephone
