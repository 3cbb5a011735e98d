// The completions for shells, made from the same tables as the manual: commands and options, their values, names of
// requests with their parameters, words of the console's commands, names of the protocol.
#pragma once

#include <string>

#include "CommandLineDescription.h"

// The tables that telephone.bash.in works with.
std::string bashTables(CommandLineDescription const& line);
// The whole completion.
std::string zshCompletion(CommandLineDescription const& line);
