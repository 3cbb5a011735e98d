// A fault as somebody orders it: which, when and for how long.
//
//     registrar away
//     datagrams lost 2 at 3s
//     store slow 0.5 on CallHeldEvent CallID=1 for 10s
//     lamps stuck after 5 requests
//
// Without a moment it begins now, and without a duration it lasts until it is ended or has done what it can.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "telephone/access/EventPattern.h"
#include "telephone/access/Words.h"
#include "telephone/base/Refusal.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/faults/FaultKinds.h"

namespace telephone {

struct FaultOrder
{
    FaultKind const* kind = nullptr;
    std::string text;  // as it was ordered
    FaultEffect effect;
    // When it begins; none of these: now.
    std::optional<std::chrono::milliseconds> at = {};
    std::optional<EventPattern> on = {};
    int afterRequests = 0;  // so many more
    std::optional<std::chrono::milliseconds> lasts = {};

    // Refused for an unknown fault, wrong arguments or a wrong moment, and for a fault that is not possible here.
    [[nodiscard]] static Outcome<FaultOrder> read(std::string const& text, FaultTargets const& targets);
    // The same from the configuration; the reason begins with the name of the key.
    [[nodiscard]] static Outcome<FaultOrder> of(FaultConfiguration const& configured, FaultTargets const& targets);
};

}  // namespace telephone
