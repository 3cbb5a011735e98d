// The command store.
#include <iostream>

#include "telephone/management/StoreCommand.h"
#include "telephone/program/Programs.h"
#include "telephone/program/StartConfiguration.h"

namespace telephone {

Outcome<int> runStore(CommandLine const& line)
{
    return startConfiguration(line).map([&line](Configuration const& configuration) {
        return runStoreCommand(line.words, configuration, std::cout, std::cerr);
    });
}

}  // namespace telephone
