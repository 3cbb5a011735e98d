// How the telephone writes JSON on one line, as the state, events and answers over HTTP are sent.
#pragma once

#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

namespace telephone {

using Json = nlohmann::ordered_json;

// One line of ASCII: other characters are escaped, so that nothing from the network can control a terminal, and what is
// not UTF-8 becomes U+FFFD.
std::string lineOf(Json const& value);

// Null for an empty text.
Json textOrNull(std::string_view text);

}  // namespace telephone
