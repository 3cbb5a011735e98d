// What a conference of this telephone looks like from outside: the conference-info document (RFC 4575).
#pragma once

#include "CallSnapshot.h"

#include <string>
#include <vector>

namespace telephone {

// focus: address of this telephone's line. The telephone itself is the first user; each call is another.
std::string formatConference(const std::string& focus, int version, const std::vector<CallSnapshot>& calls);

}  // namespace telephone
