// Calls between telephones of a fleet: one calls, the other answers. With the lock of Members.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/fleet/FleetTelephone.h"

namespace telephone {

// The caller and the one that it calls.
using FleetPair = std::pair<FleetTelephone*, FleetTelephone*>;

// Makes all calls at once, from first line to first line, and waits until they talk: seconds at most. Refused with the
// pairs that do not; the others' calls stay.
[[nodiscard]] Outcome<> callPairs(std::vector<FleetPair> const& pairs, int stop);

}  // namespace telephone
