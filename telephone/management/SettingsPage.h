// docs/settings.md, made from the table of settings.
#pragma once

#include <string>

namespace telephone {

std::string settingsPage();

}  // namespace telephone
