// The telephone's own commands: everything that a person can do to it, in one table. The console, scripts, the
// application socket and HTTP offer all of them; help, documentation and completion are made from the table.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "telephone/access/CommandSyntax.h"
#include "telephone/access/Words.h"
#include "telephone/protocol/ProtocolDescription.h"

namespace telephone {

class Session;

struct Command
{
    // Returns the result: lines of text, or JSON. Runs on the session's thread.
    using Handler = Outcome<std::string> (*)(Session&, Arguments const&);

    std::string_view name;       // one or two words: "press", "store get"
    std::string_view arguments;  // as CommandSyntax reads them
    std::string_view meaning;
    Handler handler;
};

std::span<Command const> commands();

// The command that the words begin with: of two words if there is one, else of one. Null: there is none.
Command const* findCommand(Words const& words);
// The number of words in its name.
std::size_t wordsInName(Command const& command);
// "store get KEY".
std::string usageOf(Command const& command);

// The arguments of the command that the words begin with. Refused for wrong ones, saying how it is written.
[[nodiscard]] Outcome<Arguments> parseArguments(Command const& command, Words const& words);

// Runs the command that the words begin with. Refused as parseArguments, and by the command itself.
[[nodiscard]] Outcome<std::string> runCommand(Session& session, Command const& command, Words const& words);

// The refusal of a line that begins with neither a request nor a command.
tl::unexpected<Refusal> unknownWord(std::string const& word);

// The table as the description of the protocol contains it.
std::vector<CommandDescription> commandDescriptions();
std::vector<std::string_view> commandNames();

}  // namespace telephone
