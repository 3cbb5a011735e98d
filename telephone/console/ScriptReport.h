// The result of a script as JUnit XML, which CI systems read.
#pragma once

#include <string>

#include "telephone/console/ScriptPlayer.h"

namespace telephone {

// One suite with one case, the script. Refused if the file cannot be written.
[[nodiscard]] Outcome<> writeJUnit(ScriptResult const& result, std::string const& script, std::string const& file);

}  // namespace telephone
