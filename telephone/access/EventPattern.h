// Describes the events that a script waits for: the name, and the values of some elements. The events and their
// elements are those of CommunicationsServiceEvents.h.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "CommunicationsServiceEvents.h"
#include "telephone/access/Words.h"

namespace telephone {

// The description of an event by its message's method or its operation, ignoring case; null for an unknown name.
EventDescription const* findEvent(std::string_view name);
// The methods of all events that are sent to applications.
std::vector<std::string_view> eventNames();

class EventPattern
{
public:
    // From "CallHeldEvent LineID=4711 CallID=1", the words from `first` on. A value that has a name may be written so
    // (CallState="remote ringing", Reason=busy), a flag true or false, and the line of any event may be called Line.
    // Refused for an unknown event, element or name.
    [[nodiscard]] static Outcome<EventPattern> parse(Words const& words, std::size_t first);

    [[nodiscard]] bool matches(std::string_view event) const;
    [[nodiscard]] std::string_view method() const { return event_->method; }

private:
    explicit EventPattern(EventDescription const& event)
        : event_(&event)
    {}
    Outcome<> require(std::string const& name, std::string const& value);

    EventDescription const* event_;
    std::vector<Assignment> required_;
};

}  // namespace telephone
