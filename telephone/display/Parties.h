// How the parties of calls are written: 100 in the telephone's own domain, 4712@example.com elsewhere, "Alice Example"
// 4712 with a name. The name is what the far end claims, and is always quoted. Pure functions.
#pragma once

#include <string>
#include <string_view>

#include "telephone/display/DisplayOptions.h"

namespace telephone {

// An address, one word. Empty for none.
std::string addressText(std::string_view address, DisplayOptions const& options);
// An address with a name. Either may be empty; empty for neither.
std::string partyText(std::string_view address, std::string_view name, DisplayOptions const& options);

}  // namespace telephone
