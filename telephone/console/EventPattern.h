// Which event a person waits for: its name and the values that some of its elements must have. The events and their
// elements are those of CommunicationsServiceEvents.h.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "CommunicationsServiceEvents.h"
#include "telephone/console/Words.h"

namespace telephone {

// The description of an event by its message's method or its operation, capitals aside; null where there is none.
EventDescription const* findEvent(std::string_view name);
// Of those that are sent.
std::vector<std::string_view> eventNames();

class EventPattern
{
public:
    // From "CallHeldEvent LineID=4711 CallID=1", as words from one on. A call state may be written by name
    // (CallState=connected), a flag as true or false, the line of any event as Line. Throws CommandError on an unknown
    // event or element.
    EventPattern(Words const& words, std::size_t first);

    [[nodiscard]] bool matches(std::string_view event) const;
    [[nodiscard]] std::string_view method() const { return event_->method; }

private:
    void require(std::string const& name, std::string value);

    EventDescription const* event_;
    std::vector<Assignment> required_;
};

// The name of a call state's number, as CallState=... may be written; empty where the number has none.
std::string_view callStateName(int state);

}  // namespace telephone
