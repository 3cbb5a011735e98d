#include "telephone/console/EventJournal.h"

#include <algorithm>

namespace telephone {

std::string const* EventJournal::take(EventPattern const& pattern)
{
    auto found = search(afterLast_, events_.size(), pattern);
    if (!found) {
        found = search(std::min(requestAt_, afterLast_), afterLast_, pattern);
    }
    if (!found) {
        return nullptr;
    }
    events_[*found].taken = true;
    afterLast_ = std::max(afterLast_, *found + 1);
    return &events_[*found].text;
}

std::string const* EventJournal::find(EventPattern const& pattern) const
{
    auto const found = search(std::max(requestAt_, afterLast_), events_.size(), pattern);
    return found ? &events_[*found].text : nullptr;
}

std::optional<std::size_t> EventJournal::search(std::size_t first, std::size_t end, EventPattern const& pattern) const
{
    for (std::size_t i = first; i < end; ++i) {
        if (!events_[i].taken && pattern.matches(events_[i].text)) {
            return i;
        }
    }
    return std::nullopt;
}

std::vector<std::string> EventJournal::untaken() const
{
    std::vector<std::string> texts;
    for (std::size_t i = std::min(requestAt_, afterLast_); i < events_.size(); ++i) {
        if (!events_[i].taken) {
            texts.push_back(events_[i].text);
        }
    }
    return texts;
}

}  // namespace telephone
