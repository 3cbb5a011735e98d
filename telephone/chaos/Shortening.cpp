#include "telephone/chaos/Shortening.h"

#include <algorithm>
#include <cstddef>

namespace telephone {

namespace {

using Offset = ScriptLines::difference_type;

// Tries to remove each run of that length; true if one went.
bool removeRuns(ScriptLines& lines, std::size_t length, std::function<bool(ScriptLines const&)> const& fails)
{
    bool hasRemoved = false;
    for (std::size_t begin = 0; begin < lines.size();) {
        std::size_t const end = std::min(begin + length, lines.size());
        ScriptLines without(lines.begin(), lines.begin() + static_cast<Offset>(begin));
        without.insert(without.end(), lines.begin() + static_cast<Offset>(end), lines.end());
        if (fails(without)) {
            lines = std::move(without);
            hasRemoved = true;
        } else {
            begin = end;
        }
    }
    return hasRemoved;
}

}  // namespace

ScriptLines shortened(ScriptLines lines, std::function<bool(ScriptLines const&)> const& fails)
{
    std::size_t length = std::max<std::size_t>(lines.size() / 2, 1);
    while (true) {
        bool const hasRemoved = removeRuns(lines, length, fails);
        if (length == 1 && !hasRemoved) {
            return lines;
        }
        length = std::max<std::size_t>(std::min(length / 2, lines.size() / 2), 1);
    }
}

}  // namespace telephone
