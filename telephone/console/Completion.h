// Completes the beginning of a line: names of requests and commands, then the parameters that are still missing. Pure
// functions, used by the console's Tab key.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace telephone {

// All completions of the last word of `line`, in the tables' order. A parameter ends with "=".
std::vector<std::string> completions(std::string_view line);

}  // namespace telephone
