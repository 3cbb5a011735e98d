// What a conference of this telephone looks like from outside: the conference-info document (RFC 4575).
#pragma once

#include <string>
#include <vector>

#include "telephone/calls/CallSnapshot.h"

namespace telephone {

// focus: address of this telephone's line. The telephone itself is the first user; each call is another.
std::string formatConference(std::string const& focus, int version, std::vector<CallSnapshot> const& calls);

}  // namespace telephone
