#include "CommandLineDescription.h"

#include <array>
#include <sstream>
#include <utility>

#include <CLI/CLI.hpp>

#include "telephone/program/CommandLine.h"

namespace {

std::vector<std::string> split(std::string const& text, char separator)
{
    std::vector<std::string> parts;
    std::istringstream rest(text);
    for (std::string part; std::getline(rest, part, separator);) {
        parts.push_back(part);
    }
    return parts;
}

// The values that the parser lists: "TEXT:{none,events,all}".
std::vector<std::string> choicesIn(std::string const& type)
{
    auto const begin = type.find('{');
    auto const end = type.find('}');
    if (begin == std::string::npos || end == std::string::npos) {
        return {};
    }
    return split(type.substr(begin + 1, end - begin - 1), ',');
}

std::string joined(std::vector<std::string> const& words)
{
    std::string text;
    for (std::string const& word : words) {
        text += (text.empty() ? "" : "|") + word;
    }
    return text;
}

// What the parser calls a type, as a person reads it.
std::string valueOf(CLI::Option const& option, std::vector<std::string> const& choices)
{
    if (option.get_type_size_max() == 0) {
        return {};
    }
    if (!choices.empty()) {
        return joined(choices);
    }
    std::string const type = option.get_type_name();
    constexpr std::array<std::pair<char const*, char const*>, 4> kTypes{
        {{"TEXT:FILE", "FILE"}, {"UINT", "NUMBER"}, {"INT", "NUMBER"}, {"FLOAT", "NUMBER"}}};
    for (auto const& [written, read] : kTypes) {
        if (type.starts_with(written)) {
            return read;
        }
    }
    return type;
}

OptionDescription describe(CLI::Option const& option)
{
    OptionDescription described;
    for (std::string const& name : option.get_snames()) {
        described.names.push_back("-" + name);
    }
    for (std::string const& name : option.get_lnames()) {
        described.names.push_back("--" + name);
    }
    if (option.get_positional()) {
        described.names = {option.get_name()};
    }
    described.meaning = option.get_description();
    described.choices = choicesIn(option.get_type_name());
    described.value = valueOf(option, described.choices);
    described.environment = option.get_envname();
    described.isRequired = option.get_required();
    described.isRepeated = option.get_items_expected_max() > 1;
    described.needsNoValue = !described.value.empty() && option.get_items_expected_min() == 0;
    return described;
}

SubcommandDescription describe(CLI::App const& command)
{
    SubcommandDescription described{command.get_name(), command.get_description(), {}, {}};
    for (CLI::Option const* const option : command.get_options()) {
        bool const isShown = !option->get_group().empty() && option != command.get_help_ptr();
        if (isShown) {
            (option->get_positional() ? described.arguments : described.options).push_back(describe(*option));
        }
    }
    return described;
}

}  // namespace

CommandLineDescription describeCommandLine()
{
    telephone::CommandLine line;
    CLI::App app;
    line.offer(app);
    CommandLineDescription described;
    for (CLI::Option const* const option : std::as_const(app).get_options()) {
        described.options.push_back(describe(*option));
    }
    for (CLI::App const* const command : std::as_const(app).get_subcommands({})) {
        described.commands.push_back(describe(*command));
    }
    return described;
}

bool isFile(OptionDescription const& option)
{
    return option.value == "FILE" || option.value == "FOLDER" || option.names[0] == "FILE" ||
           option.names[0] == "PATHS";
}
