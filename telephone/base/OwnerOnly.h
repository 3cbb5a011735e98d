// What the telephone writes to a file is for its owner alone. New files are so by the umask that the program sets;
// a file that exists keeps the mode that it has, and so passes through here before it is opened for writing.
#pragma once

#include <string>

#include "telephone/base/Refusal.h"

namespace telephone {

// Takes all rights from group and others. Does nothing without a file, and to what is not one: a terminal, a pipe.
// Refused: the file belongs to another user.
[[nodiscard]] Outcome<> makeOwnerOnly(std::string const& file);

}  // namespace telephone
