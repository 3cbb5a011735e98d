// What Tab can make of the beginning of a line: names of requests and commands, then the parameters that are not
// written yet. Pure functions; the console gives them to readline.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace telephone {

// Every text that the word which ends at the end of `line` may become, in the tables' order. A parameter ends with "=".
std::vector<std::string> completions(std::string_view line);

}  // namespace telephone
