// Reads the texts of answers, of events and of the elements in them. Views into the given text. Pure functions.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "CommunicationsServiceEvents.h"

namespace telephone {

struct TextElement
{
    std::string_view name;
    std::string_view value;
};

// Takes the element at the beginning of the text; nothing where the text does not begin with a whole one.
std::optional<TextElement> takeElement(std::string_view& text);

// Whether an answer says that its request failed: its result word, wherever it stands, is not sfiSuccess. An answer
// without a result word ("false", a list of devices) does not.
bool reportsFailure(std::string_view answer);

struct EventValue
{
    EventElement const* element;
    std::string_view value;
};

struct EventText
{
    EventDescription const* description;
    std::vector<EventValue> values;  // all elements of the event, in their order

    // The value of an element; empty if the event has none of that tag.
    [[nodiscard]] std::string_view value(std::string_view tag) const;
    // "4711#2": the line that the event is about, whatever its element is called; empty: the whole telephone.
    [[nodiscard]] std::string_view line() const;
    // Empty: none, also for the id 0.
    [[nodiscard]] std::string_view call() const;
};

// An event as the service sends it; nothing for any other text. An element ends where the next one begins, so that a
// name from the network that contains tags stays one value.
std::optional<EventText> readEvent(std::string_view text);

}  // namespace telephone
