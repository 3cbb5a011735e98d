// `telephone store list | get KEY | set KEY VALUE`: reads and writes the store file from the command line, also while a
// telephone is using it (its StoreWatcher then puts the values into force).
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "telephone/configuration/Configuration.h"

namespace telephone {

class Settings;

class StoreCommand
{
public:
    static constexpr int kDone = 0;
    static constexpr int kRefused = 1;  // unknown key, wrong value, unusable store: the reason is on `err`
    static constexpr int kUsage = 2;

    StoreCommand(Configuration configuration, std::ostream& out, std::ostream& err);

    // `arguments`: the words after "store" on the command line. Returns the exit status.
    int run(std::vector<std::string> const& arguments);

private:
    int list(Settings const& settings);
    int get(Settings const& settings, std::string const& key);
    int set(Settings& settings, std::string const& key, std::string const& value);
    int refuse(std::string const& reason);

    Configuration configuration_;
    std::ostream& out_;
    std::ostream& err_;
};

}  // namespace telephone
