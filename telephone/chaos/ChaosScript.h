// A random hour in the life of a telephone, as a script: calls in both directions, keys, plugs, settings, requests of
// every kind with values that fit or do not, faults of what surrounds the telephone, and now and then a rest in which
// `check` must find nothing wrong. The same seed and configuration give the same script. Pure functions.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "telephone/chaos/Shortening.h"

namespace telephone {

// What there is to act on.
struct ChaosGround
{
    std::vector<std::string> lines;    // ids
    std::vector<std::string> numbers;  // of the exchange
    std::vector<int> keys;             // numbers
    std::vector<std::string> faults;   // name and arguments: "datagrams lost COUNT [sip|rtp|all]"
};

// Each line may fail by itself (`try`) except `check`. The time that passes is at least an hour.
[[nodiscard]] ScriptLines chaosScript(ChaosGround const& ground, std::uint64_t seed);

}  // namespace telephone
