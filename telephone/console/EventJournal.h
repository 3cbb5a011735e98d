// The events received while a script plays, and which of them its waits have taken. One thread.
//
// A wait takes the first matching event after the one that the last wait took; failing that, one that came since the
// last request and was passed over. A script thus need not know the order of two events with the same cause.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "telephone/access/EventPattern.h"

namespace telephone {

class EventJournal
{
public:
    void add(std::string event) { events_.push_back({std::move(event), false}); }
    void requestSent() { requestAt_ = events_.size(); }

    // The event that a wait for the pattern takes; null if none has come yet.
    std::string const* take(EventPattern const& pattern);
    // An event since the last request or wait that matches; null if none came.
    [[nodiscard]] std::string const* find(EventPattern const& pattern) const;
    // The events since the last request or wait that no wait has taken.
    [[nodiscard]] std::vector<std::string> untaken() const;

private:
    struct Entry
    {
        std::string text;
        bool taken = false;
    };

    // The index of the first event in the range that matches and that no wait has taken.
    [[nodiscard]] std::optional<std::size_t> search(std::size_t first, std::size_t end,
                                                    EventPattern const& pattern) const;

    std::vector<Entry> events_;
    std::size_t afterLast_ = 0;  // index after the event that the last wait took
    std::size_t requestAt_ = 0;  // number of events at the last request
};

}  // namespace telephone
