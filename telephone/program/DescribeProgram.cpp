#include <iostream>

#include "telephone/access/Commands.h"
#include "telephone/base/Version.h"
#include "telephone/program/Programs.h"
#include "telephone/protocol/ProtocolDescription.h"

namespace telephone {

namespace {

Outcome<std::string> textOf(CommandLine const& line)
{
    ProtocolDescription const description(kTelephoneVersion, commandDescriptions());
    if (line.output.json) {
        return description.json();
    }
    if (line.words.empty()) {
        return description.overview();
    }
    return description.describe(joinWords(line.words));
}

}  // namespace

Outcome<int> runDescribe(CommandLine const& line)
{
    return textOf(line).map([](std::string const& text) {
        std::cout << text;
        return 0;
    });
}

}  // namespace telephone
