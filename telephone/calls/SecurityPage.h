// docs/security.md, generated from the table of permissions and the limits.
#pragma once

#include <string>

namespace telephone {

std::string securityPage();

}  // namespace telephone
