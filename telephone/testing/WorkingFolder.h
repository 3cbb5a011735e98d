// Where and how the telephones of a run are started.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "telephone/base/Refusal.h"

namespace telephone {

// The folder of the working folders: the wanted one, made if necessary; empty: a new one, whose name says what it is
// for. Refused if it cannot be made.
[[nodiscard]] Outcome<std::string> workingFolder(std::string const& wanted, std::string const& purpose = "test");

// Telephones at a time: as wanted, or one for each processor.
[[nodiscard]] std::size_t jobsOf(std::optional<int> wanted);

}  // namespace telephone
