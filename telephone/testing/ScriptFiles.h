// Finds the scripts of a test run.
#pragma once

#include <string>
#include <vector>

#include "telephone/base/Refusal.h"

namespace telephone {

// The files, and the files *.script in the folders and the folders in them; sorted, each once, named as given. Refused
// for a path that does not exist, and for a folder without a script.
[[nodiscard]] Outcome<std::vector<std::string>> findScripts(std::vector<std::string> const& paths);

}  // namespace telephone
