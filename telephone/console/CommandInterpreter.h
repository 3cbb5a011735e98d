// Runs one typed line: a complete request, a request in the short form, or a command of the console. One for each
// conversation, on its thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "telephone/console/Words.h"

namespace telephone {

class Channel;
class RequestRunner;
class TelephoneControls;
class Transcript;

class CommandInterpreter
{
public:
    enum class Kind
    {
        kNothing,  // an empty line or a comment
        kCommand,
        kRequest,
        kQuit,
    };

    struct Result
    {
        Kind kind = Kind::kNothing;
        std::optional<std::string> answer;  // of a request; nothing: it is never answered
    };

    CommandInterpreter(Channel& channel, RequestRunner& runner, TelephoneControls& controls, Transcript& transcript);

    // Writes requests, answers and results to the transcript.
    [[nodiscard]] Outcome<Result> run(std::string_view line);
    [[nodiscard]] Outcome<Result> run(Words const& words);
    Result send(std::string const& request);

    // For completion.
    static std::vector<std::string_view> commandNames();

private:
    using Handler = Outcome<> (*)(CommandInterpreter&, Words const&);

    struct Command
    {
        std::string_view name;
        std::string_view arguments;
        std::size_t least;  // arguments
        std::size_t most;
        std::string_view meaning;
        Handler handler;
    };

    static std::vector<Command> const& commands();
    static Command const* findCommand(std::string_view name);

    Outcome<> show(std::vector<std::string> const& rows);
    Outcome<> help(Words const& words);
    Outcome<> helpForAll();
    Outcome<> plug(Words const& words);
    Outcome<> store(Words const& words);
    Outcome<> say(Words const& words);

    Channel& channel_;
    RequestRunner& runner_;
    TelephoneControls& controls_;
    Transcript& transcript_;
};

}  // namespace telephone
