// The events that wait for one application: numbered from 1, bounded, never blocking who puts one in. When the
// application does not take them, the oldest is dropped, and the gap in the numbers shows it.
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
    // `wake` is called, on the putting thread, after an event came into the empty queue; it must not block.
    EventQueue(std::size_t limit, std::function<void()> wake);

    void put(std::string const& text);
    // Takes the oldest `most` events, fewer where fewer wait.
    std::vector<NumberedEvent> take(std::size_t most);
    [[nodiscard]] std::size_t size() const;
    // How many were dropped so far.
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
