// A reader of the event history: where it is, and what it wants to see. One thread uses it.
//
//     EventSubscription events(history, {17, {"CallHeldEvent"}, {"4711"}});
//     events.take(256, state, sink);   // events, or a gap and the state
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "telephone/access/Message.h"
#include "telephone/base/Refusal.h"
#include "telephone/framework/EventHistory.h"

namespace telephone {

struct EventSelection
{
    std::uint64_t after = 0;         // the events after this number
    std::vector<std::string> names;  // "CallHeldEvent"; empty: all
    // "4711" includes its appearances ("4711#2"). Empty: all events, also those of no line.
    std::vector<std::string> lines;
};

// Whether an event has one of the names and is on one of the lines. A text that is not an event is selected, too.
[[nodiscard]] bool selects(EventSelection const& selection, std::string_view event);

class EventSubscription
{
public:
    // The state, with the number of the latest event that it contains.
    struct State
    {
        std::uint64_t event = 0;
        std::string json;
    };
    using StateSource = std::function<State()>;

    EventSubscription(EventHistory const& history, EventSelection selection);

    // Passes on what came, at most `most` events. If events are no longer kept, a gap and the state come in their
    // place. False: nothing is left.
    bool take(std::size_t most, StateSource const& state, MessageSink const& sink);

    // The number of the latest event passed on or passed over.
    [[nodiscard]] std::uint64_t position() const { return selection_.after; }

private:
    void reportGap(std::uint64_t missed, StateSource const& state, MessageSink const& sink);

    EventHistory const& history_;
    EventSelection selection_;
};

// The names in "4711,4712".
[[nodiscard]] std::vector<std::string> commaSeparated(std::string_view names);

// Names of events as people type them ("callheld", "CallHeldEvent") as the service writes them. Refused for an unknown
// one, with the nearest name.
[[nodiscard]] Outcome<std::vector<std::string>> eventMethods(std::vector<std::string> const& names);

}  // namespace telephone
