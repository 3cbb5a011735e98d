// Expands the short form of a request, which people type, and reads the elements of answers and events. The requests
// and their parameters are those of CommunicationsServiceRequests.h. Pure functions.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "CommunicationsServiceRequests.h"
#include "telephone/access/Words.h"

namespace telephone {

// Whether a line is a complete request: it begins with an element, or is a signalling event.
bool isRequestText(std::string_view line);

// The description of a request by its name, ignoring case; null for an unknown name.
RequestDescription const* findRequest(std::string_view name);
std::vector<std::string_view> requestNames();

// The text of `HoldCall Line=4711 CallID=1`. Refused for an unknown request or parameter.
[[nodiscard]] Outcome<std::string> requestText(Words const& words);

// The value of the first element of a tag.
std::optional<std::string> elementValue(std::string_view text, std::string_view tag);

}  // namespace telephone
