// Compares names that a person types with the names of a table. Pure functions; capitals make no difference.
#pragma once

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace telephone {

bool equalIgnoringCase(std::string_view left, std::string_view right);
bool beginsIgnoringCase(std::string_view name, std::string_view typed);

// The names of a table's rows, in their order.
template <typename Rows, typename Row>
std::vector<std::string_view> namesOf(Rows const& rows, std::string_view Row::*name)
{
    std::vector<std::string_view> names;
    std::transform(std::begin(rows), std::end(rows), std::back_inserter(names),
                   [name](Row const& row) { return row.*name; });
    return names;
}

// The name closest to the typed one, however far; the first of several equally close. Empty without names.
std::string_view nearestName(std::string_view typed, std::vector<std::string_view> const& names);
// " (did you mean X?)" if a name is close enough to have been meant, else empty.
std::string suggestion(std::string_view typed, std::vector<std::string_view> const& names);

}  // namespace telephone
