#include "ShellCompletions.h"

#include <algorithm>
#include <map>
#include <sstream>
#include <string_view>
#include <vector>

#include "CommunicationsServiceRequests.h"
#include "telephone/access/Commands.h"
#include "telephone/access/Completion.h"
#include "telephone/access/EventPattern.h"
#include "telephone/base/Version.h"
#include "telephone/protocol/ProtocolDescription.h"

namespace {

using Table = std::map<std::string, std::string>;

template <typename Words>
std::string joined(Words const& words)
{
    std::string text;
    for (auto const& word : words) {
        text += (text.empty() ? "" : " ") + std::string(word);
    }
    return text;
}

telephone::ProtocolDescription const& protocol()
{
    static telephone::ProtocolDescription const description(telephone::kTelephoneVersion,
                                                            telephone::commandDescriptions());
    return description;
}

// As the console completes the beginning of a line, without a telephone that runs.
std::vector<std::string> consoleCompletions(std::string const& line)
{
    return telephone::completions(line, {telephone::TelephoneState(), {}, protocol()});
}

// Those that a shell takes as one word.
std::vector<std::string_view> protocolNames()
{
    auto names = protocol().names();
    std::erase_if(names, [](std::string_view name) { return name.find(' ') != std::string_view::npos; });
    return names;
}

void addWords(Table& table, std::string const& command, std::string const& line)
{
    auto const words = consoleCompletions(line.empty() ? line : line + " ");
    if (!words.empty()) {
        table[line.empty() ? command : command + " " + line] = joined(words);
    }
}

void addRequest(Table& table, RequestDescription const& request)
{
    std::string const name(request.name);
    addWords(table, "request", name);
    for (RequestParameter const& parameter : request.parameters) {
        if (parameter.values == nullptr) {
            continue;
        }
        std::string const assignment = std::string(parameter.tag) + "=";
        std::vector<std::string> values;
        for (std::string const& each : consoleCompletions(name + " " + assignment)) {
            values.push_back(each.substr(assignment.size()));
        }
        table["request " + name + " " + assignment] = joined(values);
    }
}

// What may follow the words of a command: "do", "do store", "request HoldCall".
Table wordTable(CommandLineDescription const& line)
{
    Table table;
    std::vector<std::string> first;
    for (std::string_view const name : telephone::commandNames()) {
        first.emplace_back(name.substr(0, name.find(' ')));
        addWords(table, "do", first.back());
        addWords(table, "do", std::string(name));
    }
    first.erase(std::unique(first.begin(), first.end()), first.end());
    table["do"] = joined(first);
    std::vector<std::string_view> requests;
    for (RequestDescription const& request : kRequestDescriptions) {
        requests.push_back(request.name);
        addRequest(table, request);
    }
    table["request"] = joined(requests);
    table["describe"] = joined(protocolNames());
    // An argument that is one of several forms begins with the first word of each: "list | get KEY | set KEY VALUE".
    for (SubcommandDescription const& command : line.commands) {
        for (OptionDescription const& argument : command.arguments) {
            if (argument.meaning.find(" | ") == std::string::npos) {
                continue;
            }
            std::istringstream forms(argument.meaning);
            std::string words;
            for (std::string form; std::getline(forms >> std::ws, form, '|');) {
                words += (words.empty() ? "" : " ") + form.substr(0, form.find(' '));
            }
            table[command.name] = words;
        }
    }
    return table;
}

// The kind of value, as _telephone_candidates takes it.
std::string kindOf(OptionDescription const& option)
{
    if (!option.choices.empty()) {
        return joined(option.choices);
    }
    bool const isKnown = option.value == "FILE" || option.value == "FOLDER" || option.value == "EVENTS";
    return isKnown ? option.value : "ANY";
}

void addOptions(std::string const& command, std::vector<OptionDescription> const& options, Table& names, Table& values)
{
    for (OptionDescription const& option : options) {
        for (std::string const& name : option.names) {
            std::string& known = names[command];
            known += (known.empty() ? "" : " ") + name;
            if (!option.value.empty() && !option.needsNoValue) {
                values[command + " " + name] = kindOf(option);
            }
        }
    }
}

// One word of a shell.
std::string quoted(std::string const& text)
{
    std::string result = "'";
    for (char const letter : text) {
        result += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
    }
    return result + "'";
}

std::string bashTable(char const* name, char const* meaning, Table const& table)
{
    std::string text = std::string("# ") + meaning + "\ndeclare -gA " + name + "=(\n";
    for (auto const& [key, words] : table) {
        text += "    [" + quoted(key) + "]=" + quoted(words) + "\n";
    }
    return text + ")\n";
}

std::string commandNamesOf(CommandLineDescription const& line)
{
    std::vector<std::string> names;
    for (SubcommandDescription const& command : line.commands) {
        names.push_back(command.name);
    }
    return joined(names);
}

// Text inside single quotes in which zsh gives brackets and colons a meaning of their own.
std::string zshText(std::string const& text)
{
    std::string result;
    for (char const letter : text) {
        if (letter == '\'') {
            result += "'\\''";
            continue;
        }
        if (letter == '[' || letter == ']' || letter == ':' || letter == '\\') {
            result += '\\';
        }
        result += letter;
    }
    return result;
}

std::string zshAction(OptionDescription const& option)
{
    if (!option.choices.empty()) {
        return "(" + joined(option.choices) + ")";
    }
    if (option.value == "FOLDER") {
        return "_files -/";
    }
    if (option.value == "EVENTS") {
        return " _telephone_event_names";
    }
    return isFile(option) ? "_files" : " ";
}

// "'(-c --config)'{-c,--config}'[Configuration file]:FILE:_files'".
std::string zshSpecification(OptionDescription const& option)
{
    bool const hasValue = !option.value.empty();
    std::string const several = option.isRepeated ? "*" : "";
    std::string const rest = "[" + zshText(option.meaning) + "]" +
                             (hasValue ? ":" + zshText(option.value) + ":" + zshAction(option) : "") + "'";
    std::string const assigns = hasValue ? (option.needsNoValue ? "=-" : "=") : "";
    std::string text;
    for (std::string const& name : option.names) {
        std::string const others = several.empty() ? "(" + joined(option.names) + ")" : several;
        text += "        '" + others + name + (name.starts_with("--") ? assigns : "") + rest + "\n";
    }
    return text;
}

std::string zshCommand(SubcommandDescription const& command, Table const& words)
{
    std::string text = "        " + command.name + ")\n            _arguments -s $all";
    for (OptionDescription const& option : command.options) {
        std::istringstream specifications(zshSpecification(option));
        for (std::string each; std::getline(specifications >> std::ws, each);) {
            text += " \\\n                " + each;
        }
    }
    bool const hasWords = words.count(command.name) != 0;
    for (OptionDescription const& argument : command.arguments) {
        std::string const action = hasWords ? " _telephone_next " + command.name : zshAction(argument);
        std::string const place = argument.isRepeated ? "*" : "";
        text += " \\\n                '" + place + ":" + zshText(argument.names[0]) + ":" + action + "'";
    }
    return text + "\n            ;;\n";
}

std::string zshTable(Table const& table)
{
    std::string text = "typeset -gA _telephone_words=(\n";
    for (auto const& [key, words] : table) {
        text += "    " + quoted(key) + " " + quoted(words) + "\n";
    }
    return text + ")\n";
}

constexpr char const* kZshHead = R"(#compdef telephone
# Completion of telephone(1) for zsh. Generated.

# The words that may follow those behind the command; of a request, its missing parameters or the values of one.
_telephone_next() {
    local command=$1 typed=$PREFIX
    local -a before=(${words[2,CURRENT-1]:#-*}) next
    if [[ $command == request && -n $before && $typed == *=* ]]; then
        compset -P '*='
        next=(${=_telephone_words[request $before[1] ${typed%%=*}=]})
    elif [[ $command == request && -n $before ]]; then
        local each
        for each in ${=_telephone_words[request $before[1]]}; do
            (( ${before[(I)$each*]} )) || next+=($each)
        done
    else
        next=(${=_telephone_words[$command${before:+ $before}]})
    fi
    compadd -S '' -- ${(M)next:#*=}
    compadd -- ${next:#*=}
}

# Names of events, with commas between them.
_telephone_event_names() {
    compset -P '*,'
    compadd -S '' -- $_telephone_events
}

)";

}  // namespace

std::string bashTables(CommandLineDescription const& line)
{
    Table options;
    Table values;
    Table files;
    addOptions("telephone", line.options, options, values);
    for (SubcommandDescription const& command : line.commands) {
        addOptions(command.name, command.options, options, values);
        if (std::any_of(command.arguments.begin(), command.arguments.end(), isFile)) {
            files[command.name] = "FILE";
        }
    }
    return "_telephone_commands=\"" + commandNamesOf(line) + "\"\n_telephone_events=\"" +
           joined(telephone::eventNames()) + "\"\n" +
           bashTable("_telephone_options", "Options of each command; those of telephone belong to all.", options) +
           bashTable("_telephone_values", "Kinds of values, by command and option.", values) +
           bashTable("_telephone_files", "Commands whose arguments are files.", files) +
           bashTable("_telephone_words", "What may follow the words of a command.", wordTable(line));
}

std::string zshCompletion(CommandLineDescription const& line)
{
    Table const words = wordTable(line);
    std::string text = kZshHead;
    text += "_telephone_events=(" + joined(telephone::eventNames()) + ")\n" + zshTable(words);
    text +=
        "\n_telephone() {\n    local curcontext=$curcontext state line\n    typeset -A opt_args\n    local -a all=(\n";
    for (OptionDescription const& option : line.options) {
        text += zshSpecification(option);
    }
    text += "    )\n    local -a commands=(\n";
    for (SubcommandDescription const& command : line.commands) {
        text += "        '" + command.name + ":" + zshText(command.meaning) + "'\n";
    }
    text += "    )\n    _arguments -C -s $all '1:command:->command' '*::argument:->arguments'\n    case $state in\n"
            "    command) _describe command commands ;;\n    arguments)\n        case $words[1] in\n";
    for (SubcommandDescription const& command : line.commands) {
        text += zshCommand(command, words);
    }
    return text + "        esac\n        ;;\n    esac\n}\n\n_telephone \"$@\"\n";
}
