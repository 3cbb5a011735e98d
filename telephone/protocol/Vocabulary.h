// The words for the numbers and fixed words that messages carry, both ways. The words come from
// include/CommunicationsServiceEnumerations.h. Pure functions.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "CommunicationsServiceEnumerations.h"
#include "telephone/base/Refusal.h"

namespace telephone {

// The name of a value as a message carries it: "remote ringing" for the CallState "3", "logged on" for the AgentState
// "loggedOn". A value without a name is shown with a question mark, "4?", so that it is noticed.
std::string nameOfValue(Enumeration const& enumeration, std::string_view value);
std::string nameOfValue(Enumeration const& enumeration, int value);

// The value that a person means: its name, its number or the word that messages carry. Capitals do not matter, nor do
// blanks, hyphens and the enumeration's own name: remoteRinging and sfiCallStateRemoteRinging are remote ringing. Null
// if there is none.
EnumerationValue const* lookUpValue(Enumeration const& enumeration, std::string_view typed);
// The same; if there is none, refused with the nearest name.
[[nodiscard]] Outcome<EnumerationValue const*> findValue(Enumeration const& enumeration, std::string_view typed);

// A value as a message carries it: its word, or its number as a decimal.
std::string textOfValue(Enumeration const& enumeration, EnumerationValue const& value);

// The number that a text consists of; nothing if it has other characters or is out of range.
std::optional<long long> wholeNumber(std::string_view text);

}  // namespace telephone
