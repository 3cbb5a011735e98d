#include <iostream>

#include "telephone/console/Words.h"
#include "telephone/program/Programs.h"
#include "telephone/protocol/ProtocolDescription.h"

namespace telephone {

int runDescribe(CommandLine const& line)
{
    ProtocolDescription const description(kTelephoneVersion);
    if (line.json) {
        std::cout << description.json();
        return 0;
    }
    if (line.words.empty()) {
        std::cout << description.overview();
        return 0;
    }
    auto const text = description.describe(joinWords(line.words));
    if (!text) {
        std::cerr << "telephone: " << text.error().reason << std::endl;
        return 1;
    }
    std::cout << *text;
    return 0;
}

}  // namespace telephone
