// Generates docs/settings.md from the table of settings.
#pragma once

#include <string>

namespace telephone {

std::string settingsPage();

}  // namespace telephone
