// The seeds with which every script is played.
#pragma once

#include <cstdint>
#include <string>

#include "telephone/base/Refusal.h"

namespace telephone {

struct Seeds
{
    std::uint64_t first = 0;
    std::uint64_t last = 0;

    // "17" or "1-1000". Refused for anything else, for a range that runs backwards, and for more than a million.
    [[nodiscard]] static Outcome<Seeds> parse(std::string const& text);
    // As parse reads it.
    [[nodiscard]] std::string text() const;
};

}  // namespace telephone
