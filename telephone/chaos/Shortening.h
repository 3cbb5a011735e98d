// Reduces a script that fails to the lines that it needs to fail.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace telephone {

using ScriptLines = std::vector<std::string>;

// Removes runs of lines, longer ones first, as long as the rest still fails, until no single line can go. `fails` is
// called for each attempt, and must give the same answer for the same lines; it holds for the given ones.
[[nodiscard]] ScriptLines shortened(ScriptLines lines, std::function<bool(ScriptLines const&)> const& fails);

}  // namespace telephone
