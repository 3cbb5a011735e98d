// Where the application socket is, and who may have it.
#pragma once

#include <stdexcept>
#include <string>

#include "telephone/framework/FileDescriptor.h"

namespace telephone {

// The socket of a telephone that was not told another: in the user's run folder, else in a folder of the user's under
// /tmp, which is made and checked: only its owner may enter it. Throws std::runtime_error where that folder is not to
// be trusted.
std::string standardSocketPath();

// Thrown where another telephone has the socket.
class SocketInUse : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// A listening socket at a path, of mode 0600. A socket that a dead telephone left is replaced; anything else is not.
// Throws SocketInUse, or std::runtime_error with a reason to act on.
FileDescriptor listenAt(std::string const& path);

// A socket connected to the telephone at a path. Throws std::runtime_error saying how to start one.
FileDescriptor connectTo(std::string const& path);

}  // namespace telephone
