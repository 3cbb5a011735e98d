// The text of a script that the command line names.
#pragma once

#include <string>

#include "telephone/base/Refusal.h"

namespace telephone {

// The contents of a file; "-" is standard input, to its end. Refused if it cannot be read, or if the descriptor `stop`
// becomes readable before the end of standard input.
[[nodiscard]] Outcome<std::string> readScriptText(std::string const& name, int stop);

}  // namespace telephone
