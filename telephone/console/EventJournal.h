// The events that came while a script plays, and which of them its waits have used. One thread.
//
// A wait takes the first event that matches after the one that the last wait took; failing that, one that came since
// the last request and was passed over, so that a script need not know in which order two events of one cause come.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "telephone/console/EventPattern.h"

namespace telephone {

class EventJournal
{
public:
    void add(std::string event);
    void requestSent() { requestAt_ = events_.size(); }

    // The event that a wait for the pattern takes; null where none has come yet.
    std::string const* take(EventPattern const& pattern);
    // An event that a script says must not come: since the last request or wait. Null where none came.
    [[nodiscard]] std::string const* find(EventPattern const& pattern) const;
    // What no wait has taken, since the last request or wait.
    [[nodiscard]] std::vector<std::string> untaken() const;

private:
    struct Entry
    {
        std::string text;
        bool taken = false;
    };

    std::string const* takeFrom(std::size_t first, std::size_t end, EventPattern const& pattern);

    std::vector<Entry> events_;
    std::size_t afterLast_ = 0;  // behind the event that the last wait took
    std::size_t requestAt_ = 0;  // how many had come at the last request
};

}  // namespace telephone
