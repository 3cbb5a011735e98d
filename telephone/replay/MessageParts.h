// A request or an event taken apart, so that it can be compared element by element, and put together again with other
// ids. Pure functions.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "CommunicationsServiceEnumerations.h"

namespace telephone {

struct MessagePart
{
    std::string tag;  // empty: text that is not in an element
    std::string value;
    bool isCall = false;                  // the id of a call
    Enumeration const* values = nullptr;  // of its values; null: none
};

struct MessageParts
{
    std::string method;  // empty: the text is not a message, and one part without a tag
    std::vector<MessagePart> parts;

    // The id of the call that it is about; empty: none.
    [[nodiscard]] std::string call() const;
    [[nodiscard]] std::string value(std::string_view tag) const;
};

MessageParts eventParts(std::string_view text);
MessageParts requestParts(std::string_view text);

// The text of a message: of eventParts(text) or requestParts(text) the same again.
std::string textOf(MessageParts const& message);

}  // namespace telephone
