// The options of the telephones that this program starts, as its own command line has them: those of a test and of a
// fleet. How they are configured is not among them.
#pragma once

#include <string>
#include <vector>

#include "telephone/program/CommandLine.h"

namespace telephone {

// Files with their whole paths, because each telephone has a working folder of its own.
[[nodiscard]] std::vector<std::string> commonOptions(CommandLine const& line);

}  // namespace telephone
