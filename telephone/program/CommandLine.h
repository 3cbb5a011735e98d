// What the telephone's command line asks for. Read once by main.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace telephone {

enum class Action
{
    kConsole,
    kTour,
    kPlay,
    kServe,
    kExchange,
    kRequest,
    kWatch,
    kStore,
    kDescribe,
};

constexpr char const* kTelephoneVersion = "1.0.0";

struct CommandLine
{
    Action action = Action::kConsole;
    std::string configuration;  // file; empty: the standard telephone
    std::string socket;         // empty: the configured one, else the standard one
    std::string library;        // empty: looked for, see ServiceLibrary::find
    std::string logFile;
    std::optional<int> logLevel;
    bool withoutExchange = false;
    int port = 0;                    // of the exchange alone
    std::string script;              // to play; "-": standard input
    std::vector<std::string> words;  // of a request, of the store or of a name to describe
    bool json = false;               // describe as JSON

    // The command line, or the exit status where the program is to end at once: after --help, or a mistake, which is
    // then written to standard error.
    static std::optional<CommandLine> read(int count, char const* const* arguments, int& exitStatus);
};

}  // namespace telephone
