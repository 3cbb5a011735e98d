// How names that a person types are compared with those of a table. Pure functions.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace telephone {

bool equalIgnoringCase(std::string_view left, std::string_view right);

// The name that is closest to what was typed; empty where none is close enough to have been meant.
std::string nearestName(std::string_view typed, std::vector<std::string_view> const& names);
// " (did you mean X?)", or nothing.
std::string suggestion(std::string_view typed, std::vector<std::string_view> const& names);

}  // namespace telephone
