#include "telephone/framework/Channel.h"

#include <algorithm>
#include <iterator>

namespace telephone {

Channel::Channel(std::string name, FrameworkContext& context, std::size_t queueLimit, std::function<void()> wake)
    : name_(std::move(name))
    , context_(context)
    , limit_(std::max<std::size_t>(queueLimit, 1))
    , wake_(std::move(wake))
{}

void Channel::sendEvent(std::string const& message)
{
    bool wasEmpty = false;
    {
        std::lock_guard const lock(mutex_);
        wasEmpty = events_.empty();
        if (events_.size() >= limit_) {
            events_.pop_front();
            ++dropped_;
        }
        events_.push_back({++lastNumber_, message});
    }
    if (wasEmpty && wake_) {
        wake_();
    }
}

std::vector<NumberedEvent> Channel::take(std::size_t most)
{
    std::lock_guard const lock(mutex_);
    auto const end = events_.begin() + static_cast<std::ptrdiff_t>(std::min(most, events_.size()));
    std::vector<NumberedEvent> taken(std::make_move_iterator(events_.begin()), std::make_move_iterator(end));
    events_.erase(events_.begin(), end);
    return taken;
}

std::uint64_t Channel::dropped() const
{
    std::lock_guard const lock(mutex_);
    return dropped_;
}

}  // namespace telephone
