// Asks several telephones at once: all are sent their text before the first reply is waited for. With the lock of
// Members.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "TelephoneClient.h"
#include "telephone/base/Refusal.h"
#include "telephone/fleet/FleetTelephone.h"

namespace telephone {

using FleetTelephones = std::vector<FleetTelephone*>;

// The replies in the order of the telephones. Refused, each for itself: as FleetTelephone::send and reply. A telephone
// that does not answer within seconds delays the others no longer. `stop` as in ask of telephone/applications.
[[nodiscard]] std::vector<Outcome<telephone_client::Reply>>
askEach(FleetTelephones const& telephones, std::function<std::string(FleetTelephone const&)> const& text, int stop);

// A reply in one text: the answer or the result, with the reasons. Refused with it if it says that the request failed.
[[nodiscard]] Outcome<std::string> textOf(Outcome<telephone_client::Reply> const& reply);

}  // namespace telephone
