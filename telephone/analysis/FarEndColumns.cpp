#include "telephone/analysis/FarEndColumns.h"

#include <algorithm>

namespace telephone {

void FarEndColumns::note(std::string const& name, std::uint64_t moment)
{
    auto const [place, isNew] = places_.try_emplace(name, presences_.size());
    if (isNew) {
        presences_.push_back({name, moment, moment});
    }
    presences_[place->second].end = moment;
}

void FarEndColumns::arrange(std::size_t mostColumns)
{
    std::vector<std::uint64_t> ends;  // of the last far end of each column
    for (Presence const& each : presences_) {
        // The column that has been free for longest; if none is free, the one that will be first.
        std::size_t column = ends.size();
        if (column == mostColumns) {
            column = static_cast<std::size_t>(std::min_element(ends.begin(), ends.end()) - ends.begin());
            ends[column] = std::max(ends[column], each.end);
            names_[column] += ", " + each.name;
            ++counts_[column];
        } else {
            ends.push_back(each.end);
            names_.push_back(each.name);
            counts_.push_back(1);
        }
        columns_[each.name] = column;
    }
}

std::size_t FarEndColumns::columnOf(std::string_view name) const
{
    auto const found = columns_.find(name);
    return found != columns_.end() ? found->second : 0;
}

bool FarEndColumns::shares(std::string_view name) const
{
    std::size_t const column = columnOf(name);
    return column < counts_.size() && counts_[column] > 1;
}

}  // namespace telephone
