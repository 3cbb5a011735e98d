// How a lamp shines, in words and as a picture, and what it is about. Pure functions.
#pragma once

#include <string>
#include <string_view>

#include "telephone/display/StyledText.h"
#include "telephone/protocol/TelephoneState.h"

namespace telephone {

// The number of its key, or the name of a lamp outside the keys.
std::string lampName(KeyState const& key);
// "flashing green", "off".
std::string lampWords(LampState const& lamp);
Style lampStyle(LampState const& lamp);
// Its cadence: "[==  ==]".
std::string_view lampPicture(LampState const& lamp);
// What the lamp of a key is about; may be empty. A dark lamp does not tell a line that is out of service from an idle
// one.
std::string lampMeaning(KeyState const& key, TelephoneState const& state);

}  // namespace telephone
