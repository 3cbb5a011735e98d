// The events waiting for one application, numbered from 1. The queue is bounded and `put` never blocks: when it is
// full, the oldest event is dropped, which leaves a gap in the numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace telephone {

struct NumberedEvent
{
    std::uint64_t number = 0;
    std::string text;
};

class EventQueue
{
public:
    // `wake` is called on the thread of `put` after an event came into the empty queue; it must not block.
    EventQueue(std::size_t limit, std::function<void()> wake);

    void put(std::string const& text);
    // Takes the oldest events, at most `most`.
    std::vector<NumberedEvent> take(std::size_t most);
    // The number of events dropped so far.
    [[nodiscard]] std::uint64_t dropped() const;

private:
    std::size_t const limit_;
    std::function<void()> const wake_;
    mutable std::mutex mutex_;
    std::deque<NumberedEvent> events_;
    std::uint64_t lastNumber_ = 0;
    std::uint64_t dropped_ = 0;
};

}  // namespace telephone
