// The trace of a telephone, from the command line or from a command.
#pragma once

#include <string>

#include "telephone/base/Refusal.h"

namespace telephone {

class TelephoneControls;

// As startTrace, for this telephone. A later failure is logged.
[[nodiscard]] Outcome<> traceTo(std::string const& file, TelephoneControls& telephone);

}  // namespace telephone
