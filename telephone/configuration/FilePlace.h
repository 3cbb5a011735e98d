// How the mistakes of a file are written: "desk.toml:2: <what is wrong>". Pure functions.
#pragma once

#include <string>
#include <string_view>

#include "telephone/base/Refusal.h"

namespace telephone {

// Lines count from 1.
[[nodiscard]] inline tl::unexpected<Refusal> refuseAt(std::string const& file, int line, std::string_view what)
{
    return refuse(RefusalKind::kBadInput, file + ":" + std::to_string(line) + ": " + std::string(what));
}

}  // namespace telephone
