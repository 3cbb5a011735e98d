// The words for the numbers and fixed words that messages carry, both ways. Whatever is shown to people takes its words
// from here, and whatever people type is read here; the tables are those of
// include/CommunicationsServiceEnumerations.h. Pure functions.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "CommunicationsServiceEnumerations.h"
#include "telephone/base/Refusal.h"

namespace telephone {

// The name of a value as a message carries it: "remote ringing" for the CallState "3", "logged on" for the AgentState
// "loggedOn". A value without a name is shown with a question mark, "4?", so that it is noticed.
std::string nameOfValue(Enumeration const& enumeration, std::string_view value);
std::string nameOfValue(Enumeration const& enumeration, int value);

// The value that a person means: its name, its number or the word that messages carry. Capitals do not matter, nor do
// blanks and hyphens: remoteRinging is remote ringing. Null where there is none.
EnumerationValue const* lookUpValue(Enumeration const& enumeration, std::string_view typed);
// The same; refused, with the nearest name, where there is none.
[[nodiscard]] Outcome<EnumerationValue const*> findValue(Enumeration const& enumeration, std::string_view typed);

// A value as a message carries it: its word, or its number as a decimal.
std::string textOfValue(Enumeration const& enumeration, EnumerationValue const& value);

// The names of an enumeration's values, for completion.
std::vector<std::string_view> namesOfValues(Enumeration const& enumeration);

}  // namespace telephone
