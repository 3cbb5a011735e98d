// The application socket: its path, and the rules for opening it.
#pragma once

#include <string>

#include "telephone/base/Refusal.h"
#include "telephone/framework/FileDescriptor.h"

namespace telephone {

// The default socket: in the user's run folder, else in a folder of the user's under /tmp, which is created if
// necessary and which only its owner may enter. Refused if that folder cannot be trusted.
[[nodiscard]] Outcome<std::string> standardSocketPath();

// A listening socket at a path, with mode 0600. Replaces the socket of a telephone that has ended, and nothing else.
// kAlreadyExists: a running telephone has the socket.
[[nodiscard]] Outcome<FileDescriptor> listenAt(std::string const& path);

}  // namespace telephone
