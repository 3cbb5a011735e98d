#include "telephone/program/Output.h"

#include <cstdio>
#include <utility>

namespace telephone {

namespace {

void printLine(std::FILE* file, std::string const& text)
{
    std::fwrite(text.data(), 1, text.size(), file);
    std::fputc('\n', file);
    std::fflush(file);
}

OutputKind outputKind(CommandLine const& line)
{
    if (line.output.raw) {
        return OutputKind::kTags;
    }
    if (line.output.json) {
        return OutputKind::kJson;
    }
    return line.action == Action::kTour ? OutputKind::kDrawing : OutputKind::kWords;
}

}  // namespace

DisplayOptions displayOptions(CommandLine const& line, std::string ownDomain)
{
    DisplayOptions options;
    options.ownDomain = std::move(ownDomain);
    options.addresses = line.output.addresses;
    options.date = line.output.date;
    options.utc = line.output.utc || line.virtualStart;
    fitToTerminal(options, line.output.colour);
    return options;
}

Transcript openTranscript(CommandLine const& line, std::string ownDomain)
{
    bool const isQuiet = line.action == Action::kReplay;
    return Transcript([isQuiet](std::string const& text) { isQuiet ? void() : printLine(stdout, text); },
                      [](std::string const& text) { printLine(stderr, text); }, outputKind(line),
                      displayOptions(line, std::move(ownDomain)));
}

}  // namespace telephone
