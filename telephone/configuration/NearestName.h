// The known name that a mistyped one is most like, for messages that say what was expected.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <numeric>
#include <string_view>
#include <vector>

namespace telephone {

// How many characters must be added, removed or replaced to make one text of the other (Levenshtein).
inline std::size_t editDistance(std::string_view one, std::string_view other)
{
    std::vector<std::size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < one.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t k = 0; k < other.size(); ++k) {
            auto const replaced = diagonal + (one[i] == other[k] ? 0 : 1);
            diagonal = row[k + 1];
            row[k + 1] = std::min({replaced, row[k] + 1, row[k + 1] + 1});
        }
    }
    return row.back();
}

// `name` is the member of a row that holds its name. The first of several that are equally near; "" without rows.
template <typename Rows, typename Row>
std::string_view nearestName(std::string_view wanted, Rows const& rows, std::string_view Row::*name)
{
    constexpr std::size_t kLongestName = 64;  // more of a text that is no name at all says nothing
    std::string_view nearest;
    auto least = std::numeric_limits<std::size_t>::max();
    for (auto const& row : rows) {
        if (auto const distance = editDistance(wanted.substr(0, kLongestName), row.*name); distance < least) {
            least = distance;
            nearest = row.*name;
        }
    }
    return nearest;
}

}  // namespace telephone
