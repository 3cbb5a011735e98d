// Runs one line that a person wrote: a request as it stands, a request in the short form, or a command of the console.
// One per conversation, on its thread.
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
        std::optional<std::string> answer;  // of a request; none: it is never answered
    };

    CommandInterpreter(Channel& channel, RequestRunner& runner, TelephoneControls& controls, Transcript& transcript);

    // Writes what happens to the transcript. Throws CommandError where the line cannot be done.
    Result run(std::string_view line);
    Result run(Words const& words);
    Result send(std::string const& request);

    // Whether these words send a request, before they are run.
    static bool sendsRequest(Words const& words);
    // The commands of the console, for its help and completion.
    static std::vector<std::string_view> commandNames();

private:
    using Handler = void (CommandInterpreter::*)(Words const&);

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

    void help(Words const& words);
    void helpForAll();
    void requests(Words const& words);
    void events(Words const& words);
    void lines(Words const& words);
    void calls(Words const& words);
    void keys(Words const& words);
    void lamps(Words const& words);
    void press(Words const& words);
    void release(Words const& words);
    void hook(Words const& words);
    void plug(Words const& words);
    void unplug(Words const& words);
    void lock(Words const& words);
    void unlock(Words const& words);
    void record(Words const& words);
    void store(Words const& words);
    void log(Words const& words);
    void say(Words const& words);
    void quit(Words const& words);

    Channel& channel_;
    RequestRunner& runner_;
    TelephoneControls& controls_;
    Transcript& transcript_;
};

}  // namespace telephone
