#include "telephone/console/ScriptOptions.h"

#include <algorithm>
#include <array>
#include <sstream>

#include <spdlog/fmt/fmt.h>

#include "telephone/access/Words.h"
#include "telephone/base/Names.h"

namespace telephone {

namespace {

struct OptionRow
{
    std::string_view name;
    std::string ScriptOptions::*value;
};

constexpr std::array kOptions{
    OptionRow{"time", &ScriptOptions::time},
    OptionRow{"check", &ScriptOptions::check},
    OptionRow{"config", &ScriptOptions::config},
};

std::string firstWord(std::string_view line)
{
    return std::string(line.substr(0, line.find_first_of(" \t")));
}

Outcome<> readOption(Words const& words, ScriptOptions& options)
{
    auto const row = words.size() < 2 ? kOptions.end() : std::ranges::find(kOptions, words[1], &OptionRow::name);
    if (words.size() != 3 || row == kOptions.end()) {
        return refuse(RefusalKind::kBadInput, "write it as: option time|check|config VALUE");
    }
    options.*row->value = words[2];
    return {};
}

}  // namespace

bool isScriptComment(std::string_view line)
{
    return line.empty() || line.front() == '#';
}

bool isScriptOption(std::string_view line)
{
    return equalIgnoringCase(firstWord(line), "option");
}

Outcome<ScriptOptions> scriptOptions(std::string const& script)
{
    ScriptOptions options;
    std::istringstream lines(script);
    std::string text;
    for (int number = 1; std::getline(lines, text); ++number) {
        std::string const line(trimmed(text));
        if (isScriptComment(line)) {
            continue;
        }
        if (!isScriptOption(line)) {
            break;
        }
        auto const read = splitWords(line).and_then([&](Words const& words) { return readOption(words, options); });
        if (!read) {
            return refuse(read.error().kind, fmt::format("line {}: {}: {}", number, line, read.error().reason));
        }
    }
    return options;
}

}  // namespace telephone
