// The configuration that a command line selects: its file, or the standard telephone, changed by the other options.
// Opens the log accordingly.
#pragma once

#include "telephone/base/Refusal.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/program/CommandLine.h"

namespace telephone {

[[nodiscard]] Outcome<Configuration> startConfiguration(CommandLine const& line);

}  // namespace telephone
