#include "telephone/framework/EventQueue.h"

#include <algorithm>
#include <iterator>

namespace telephone {

EventQueue::EventQueue(std::size_t limit, std::function<void()> wake)
    : limit_(std::max<std::size_t>(limit, 1))
    , wake_(std::move(wake))
{}

void EventQueue::put(std::string const& text)
{
    bool wasEmpty = false;
    {
        std::lock_guard const lock(mutex_);
        wasEmpty = events_.empty();
        if (events_.size() >= limit_) {
            events_.pop_front();
            ++dropped_;
        }
        events_.push_back({++lastNumber_, text});
    }
    if (wasEmpty && wake_) {
        wake_();
    }
}

std::vector<NumberedEvent> EventQueue::take(std::size_t most)
{
    std::lock_guard const lock(mutex_);
    auto const end = events_.begin() + static_cast<std::ptrdiff_t>(std::min(most, events_.size()));
    std::vector<NumberedEvent> taken(std::make_move_iterator(events_.begin()), std::make_move_iterator(end));
    events_.erase(events_.begin(), end);
    return taken;
}

std::uint64_t EventQueue::dropped() const
{
    std::lock_guard const lock(mutex_);
    return dropped_;
}

}  // namespace telephone
