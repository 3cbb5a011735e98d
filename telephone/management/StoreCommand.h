// `telephone store list | get KEY | set KEY VALUE`: reads and writes the store file from the command line, also while a
// telephone is using it (its StoreWatcher then puts the values into force).
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "telephone/configuration/Configuration.h"

namespace telephone {

// Exit statuses.
constexpr int kStoreDone = 0;
constexpr int kStoreRefused = 1;  // unknown key, wrong value, unusable store: the reason is on `err`
constexpr int kStoreUsage = 2;

// arguments: the words after "store" on the command line. Returns the exit status.
int runStoreCommand(std::vector<std::string> const& arguments, Configuration const& configuration, std::ostream& out,
                    std::ostream& err);

}  // namespace telephone
