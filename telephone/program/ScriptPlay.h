// The command play: a script and the telephone it asks for.
#pragma once

#include "telephone/base/Refusal.h"
#include "telephone/program/CommandLine.h"

namespace telephone {

class Conversation;
class StopSignal;

// The command line with what the script says about its telephone; unchanged for other commands, and for a script from
// standard input, which may come only after the telephone is made. Refused if the file cannot be read, or an option of
// the script is wrong.
[[nodiscard]] Outcome<CommandLine> withScript(CommandLine line, StopSignal const& stop);

// Plays the script and writes its result to the files that the command line names. True if it passed.
[[nodiscard]] Outcome<bool> playScript(Conversation& conversation, CommandLine const& line);

}  // namespace telephone
