// How the commands that write what happens do it: console, tour, play and watch; and replay, which does not.
#pragma once

#include <string>

#include "telephone/console/Transcript.h"
#include "telephone/program/CommandLine.h"

namespace telephone {

// How words are written to standard output. `ownDomain` as in DisplayOptions.
[[nodiscard]] DisplayOptions displayOptions(CommandLine const& line, std::string ownDomain);

// Writes to standard output, unless a replay reports only differences, and to standard error what went wrong with a
// script. `ownDomain` as in DisplayOptions.
[[nodiscard]] Transcript openTranscript(CommandLine const& line, std::string ownDomain);

}  // namespace telephone
