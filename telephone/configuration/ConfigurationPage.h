// Generates docs/configuration.md from the tables of the configuration file.
#pragma once

#include <string>

namespace telephone {

std::string configurationPage();

}  // namespace telephone
