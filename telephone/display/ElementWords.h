// What events and answers say, in words. One table says for each element of each event and answer whether and how it is
// shown; elements that say nothing (zero, empty, none, normal) are left out. Pure functions; any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "telephone/display/DisplayOptions.h"
#include "telephone/protocol/MessageText.h"

namespace telephone {

// The label with the value in the place of {}, if it has one.
std::string withValue(std::string_view label, std::string_view value);

struct MessageWords
{
    std::string what;                  // "remote ringing", "registered"
    std::string party;                 // the far end, with its name; may be empty
    std::vector<std::string> details;  // what is not empty

    // The party and the details: "100, call-back possible".
    [[nodiscard]] std::string detailText() const;
};

// The elements of an event, or of the answer to a request; `message` is its method. What happened is `name`, unless an
// element says it better.
MessageWords elementWords(std::string_view message, std::string_view name, std::vector<EventValue> const& values,
                          DisplayOptions const& options);

struct EventWords
{
    std::string line;    // "4711#2"; empty: the whole telephone
    std::string call;    // empty: none
    std::string farEnd;  // its address without its name; empty: not known
    MessageWords words;
};

EventWords eventWords(EventText const& event, DisplayOptions const& options);

// "CallHeldEvent 4711 call 1: held"; any other text as it stands, made safe.
std::string eventInWords(std::string_view event, DisplayOptions const& options);

}  // namespace telephone
