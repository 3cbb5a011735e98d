#include "telephone/base/Names.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <numeric>

namespace telephone {

namespace {

char lower(char letter)
{
    return static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
}

// How many letters must be added, removed or replaced (Levenshtein), ignoring case.
std::size_t distance(std::string_view left, std::string_view right)
{
    std::vector<std::size_t> row(right.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= left.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= right.size(); ++j) {
            std::size_t const changed = diagonal + (lower(left[i - 1]) == lower(right[j - 1]) ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({changed, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row.back();
}

// A longer text is not a mistyped name; comparing it whole would take long.
std::string_view shortened(std::string_view typed)
{
    constexpr std::size_t kLongestName = 64;
    return typed.substr(0, kLongestName);
}

struct Nearest
{
    std::string_view name;
    std::size_t changes = std::numeric_limits<std::size_t>::max();
};

Nearest findNearest(std::string_view typed, std::vector<std::string_view> const& names)
{
    Nearest nearest;
    for (std::string_view const name : names) {
        bool const isBeginning = !typed.empty() && beginsIgnoringCase(name, typed);
        std::size_t const changes = isBeginning ? 1 : distance(name, typed);
        if (changes < nearest.changes) {
            nearest = {name, changes};
        }
    }
    return nearest;
}

}  // namespace

bool equalIgnoringCase(std::string_view left, std::string_view right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return lower(a) == lower(b); });
}

bool beginsIgnoringCase(std::string_view name, std::string_view typed)
{
    return equalIgnoringCase(name.substr(0, typed.size()), typed);
}

std::string_view nearestName(std::string_view typed, std::vector<std::string_view> const& names)
{
    return findNearest(shortened(typed), names).name;
}

std::string suggestion(std::string_view typed, std::vector<std::string_view> const& names)
{
    typed = shortened(typed);
    auto const nearest = findNearest(typed, names);
    bool const isMeant = nearest.changes <= std::max<std::size_t>(typed.size() / 2, 1);
    return isMeant ? " (did you mean " + std::string(nearest.name) + "?)" : std::string();
}

}  // namespace telephone
