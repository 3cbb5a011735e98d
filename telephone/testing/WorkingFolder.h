// Where and how the telephones of a run are started.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "telephone/base/Refusal.h"

namespace telephone {

// The folder of the working folders: the wanted one, made if necessary; empty: a new one. Refused if it cannot be made.
[[nodiscard]] Outcome<std::string> workingFolder(std::string const& wanted);

// The file of this program.
[[nodiscard]] std::string ownProgram();

// Telephones at a time: as wanted, or one for each processor.
[[nodiscard]] std::size_t jobsOf(std::optional<int> wanted);

}  // namespace telephone
