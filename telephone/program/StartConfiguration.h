// The configuration that a command line asks for: its file, or the standard telephone, with what the other options
// change. Opens the log as it says.
#pragma once

#include "telephone/configuration/Configuration.h"
#include "telephone/program/CommandLine.h"

namespace telephone {

// Throws ConfigurationError, or std::runtime_error where the log cannot be opened.
Configuration startConfiguration(CommandLine const& line);

}  // namespace telephone
