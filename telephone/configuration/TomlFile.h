// A TOML file as text and as a tree. Pure functions but for the reading.
#pragma once

#include <string>
#include <string_view>

#include <toml++/toml.h>

#include "telephone/base/Refusal.h"

namespace telephone {

// The contents of a file. Refused with the reason of the system; `what` says what the file is: "configuration file".
[[nodiscard]] Outcome<std::string> readFileText(std::string const& path, std::string_view what);

// Refused with the place of the first mistake: "desk.toml:2: ...".
[[nodiscard]] Outcome<toml::table> parseToml(std::string_view text, std::string const& path);

// Where something begins in the file, from 1.
int fileLineOf(toml::source_region const& region);

// A value as messages name it: the text "abc".
std::string valueInWords(toml::node const& node);

}  // namespace telephone
