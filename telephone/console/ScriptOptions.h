// How a script wants to be played. It says so before its first step, and its word has precedence over the command line:
//
//     option time real              as --time
//     option check events           as --check
//     option config desk.toml       as --config; the path starts from the folder of the script
//
// Pure functions.
#pragma once

#include <string>
#include <string_view>

#include "telephone/base/Refusal.h"

namespace telephone {

// Empty: the script does not say.
struct ScriptOptions
{
    std::string time;
    std::string check;
    std::string config;

    bool operator==(ScriptOptions const&) const = default;
};

// Whether a line, without blanks around it, says nothing to the player.
bool isScriptComment(std::string_view line);
// Whether it is an option, also a wrong one.
bool isScriptOption(std::string_view line);

// The options before the first step; their values are not checked. Refused for an unknown one, with the number of its
// line.
[[nodiscard]] Outcome<ScriptOptions> scriptOptions(std::string const& script);

}  // namespace telephone
