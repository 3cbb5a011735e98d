// The name of this module in the log. For the sources of this folder only.
#pragma once

namespace telephone {

constexpr char const* kComponent = "team";

}  // namespace telephone
