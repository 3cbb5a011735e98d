#include "telephone/base/Names.h"

#include <algorithm>
#include <cctype>
#include <numeric>

namespace telephone {

namespace {

char lower(char letter)
{
    return static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
}

// How many letters have to be put in, left out or changed (Levenshtein), capitals aside.
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

bool beginsWith(std::string_view name, std::string_view typed)
{
    return !typed.empty() && name.size() >= typed.size() && equalIgnoringCase(name.substr(0, typed.size()), typed);
}

}  // namespace

bool equalIgnoringCase(std::string_view left, std::string_view right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return lower(a) == lower(b); });
}

std::string nearestName(std::string_view typed, std::vector<std::string_view> const& names)
{
    std::string_view nearest;
    std::size_t least = std::max<std::size_t>(typed.size() / 2, 1) + 1;
    for (std::string_view const name : names) {
        std::size_t const changes = beginsWith(name, typed) ? 1 : distance(name, typed);
        if (changes < least) {
            least = changes;
            nearest = name;
        }
    }
    return std::string(nearest);
}

std::string suggestion(std::string_view typed, std::vector<std::string_view> const& names)
{
    std::string const nearest = nearestName(typed, names);
    return nearest.empty() ? std::string() : " (did you mean " + nearest + "?)";
}

}  // namespace telephone
