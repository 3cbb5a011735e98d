// The telephone's command line as plain values, read from its parser: what the manual and the completions are made
// from.
#pragma once

#include <string>
#include <vector>

// An option, or an argument without one.
struct OptionDescription
{
    std::vector<std::string> names;    // "-c", "--config"; of an argument its name alone: "FILE"
    std::string meaning;               // one line
    std::string value;                 // what its value is: "FILE", "NUMBER", "TEXT", "auto|always|never"; empty: none
    std::vector<std::string> choices;  // the permitted values; empty: any
    std::string environment;           // variable that stands for it; may be empty
    bool isRequired = false;
    bool isRepeated = false;    // takes several values
    bool needsNoValue = false;  // the value may be left out
};

struct SubcommandDescription
{
    std::string name;
    std::string meaning;
    std::vector<OptionDescription> options;
    std::vector<OptionDescription> arguments;
};

struct CommandLineDescription
{
    std::vector<OptionDescription> options;
    std::vector<SubcommandDescription> commands;
};

// In the order of --help. Without --help itself in the commands, and without what is hidden.
CommandLineDescription describeCommandLine();

// Whether a value is a file or a folder.
bool isFile(OptionDescription const& option);
