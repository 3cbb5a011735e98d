// What must hold of a telephone whatever was done to it, checked while nothing moves: what applications were told is
// what is the case, every lamp has its cause, no lock of the service stays taken, no accepted setting is missing from
// the store, and memory comes back. Each session has its own, whose checks compare memory with the first.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "telephone/framework/EventHistory.h"
#include "telephone/protocol/TelephoneState.h"

namespace telephone {

class Invariants
{
public:
    // One sentence for each that does not hold. Missing are accepted settings that are not in the store.
    [[nodiscard]] std::vector<std::string> broken(EventHistory const& history, TelephoneState const& state,
                                                  std::vector<std::string> const& missing);

private:
    void checkMemory(EventHistory::Events const& events, std::vector<std::string>& broken);

    std::optional<std::size_t> memoryAtRest_;  // bytes in use at the first check without calls
};

// --- the parts that compare plain values

// Calls of which the events say something else than the state. The events are all that there were.
[[nodiscard]] std::vector<std::string> wronglyToldCalls(EventHistory::Events const& events,
                                                        TelephoneState const& state);
// Accepted settings, "key = value", that are missing in the store.
[[nodiscard]] std::vector<std::string> settingsNotStored(std::vector<std::string> const& missing);
// Lamps that are lit without a cause.
[[nodiscard]] std::vector<std::string> lampsWithoutCause(TelephoneState const& state);

}  // namespace telephone
