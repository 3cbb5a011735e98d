#include "telephone/console/EventJournal.h"

#include <algorithm>

namespace telephone {

void EventJournal::add(std::string event)
{
    events_.push_back({std::move(event), false});
}

std::string const* EventJournal::take(EventPattern const& pattern)
{
    if (auto const* const found = takeFrom(afterLast_, events_.size(), pattern)) {
        return found;
    }
    return takeFrom(std::min(requestAt_, afterLast_), afterLast_, pattern);
}

std::string const* EventJournal::takeFrom(std::size_t first, std::size_t end, EventPattern const& pattern)
{
    for (std::size_t i = first; i < end; ++i) {
        Entry& entry = events_[i];
        if (entry.taken || !pattern.matches(entry.text)) {
            continue;
        }
        entry.taken = true;
        afterLast_ = std::max(afterLast_, i + 1);
        return &entry.text;
    }
    return nullptr;
}

std::string const* EventJournal::find(EventPattern const& pattern) const
{
    for (std::size_t i = std::max(requestAt_, afterLast_); i < events_.size(); ++i) {
        if (!events_[i].taken && pattern.matches(events_[i].text)) {
            return &events_[i].text;
        }
    }
    return nullptr;
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
