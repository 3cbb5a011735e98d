// The commands of a fleet: one table, by which the prompt and the page run them.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "telephone/base/Refusal.h"
#include "telephone/fleet/Members.h"

namespace telephone {

struct FleetCommand
{
    std::string_view name;
    std::string_view usage;  // what follows the name
    std::string_view meaning;
    // Null: the prompt itself does it.
    Outcome<std::string> (*run)(Members& members, std::string_view rest);
};

[[nodiscard]] std::span<FleetCommand const> fleetCommands();

// The command of a line, and the rest of the line. Null: there is no such command.
struct FleetLine
{
    FleetCommand const* command;
    std::string_view rest;
};
[[nodiscard]] FleetLine readFleetLine(std::string_view line);

// Runs a line with the lock of Members. Refused with the reason, also what only the prompt can do. Any thread.
[[nodiscard]] Outcome<std::string> runFleetLine(Members& members, std::string_view line);

}  // namespace telephone
