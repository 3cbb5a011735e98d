// The manual pages, made from the tables.
#pragma once

#include <string>

#include "CommandLineDescription.h"

std::string telephonePage(CommandLineDescription const& line);  // telephone(1)
std::string checkPage();                                        // telephone-check(1)
std::string configurationManual();                              // telephone.toml(5)
std::string protocolPage();                                     // telephone-protocol(7)
