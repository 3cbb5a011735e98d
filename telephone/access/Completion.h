// Completes the beginning of a line: names of requests and commands, then what may follow: parameters, words of a
// command, and values that the telephone has at this moment (lines, calls, keys, settings).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "telephone/protocol/ProtocolDescription.h"
#include "telephone/protocol/TelephoneState.h"

namespace telephone {

// Where values come from.
struct CompletionSource
{
    TelephoneState const& state;
    std::vector<std::string> const& settings;  // keys of the store
    ProtocolDescription const& description;
};

// All completions of the last word of `line`, in the tables' order. A parameter without its value ends with "=".
std::vector<std::string> completions(std::string_view line, CompletionSource const& source);

}  // namespace telephone
