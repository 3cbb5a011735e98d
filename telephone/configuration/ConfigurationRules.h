// Rules between the values of a configuration: unique line ids, line numbers and key numbers, targets that exist,
// well-formed addresses, folders that exist. Completes the values that follow from others. ConfigurationFile applies
// the rules to each file.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/configuration/Configuration.h"

namespace telephone {

// Line numbers in the file, from 1; 0: not in the file.
struct ConfigurationPlaces
{
    std::string file;
    std::vector<int> lines;  // each [[line]]
    std::vector<int> keys;   // each [[key]]
    std::vector<int> exchangeNumbers;
    std::vector<int> faults;
    int sip = 0;
    int tls = 0;
    int exchange = 0;
    int dns = 0;
    int server = 0;
    int push = 0;
    int http = 0;
    int sessionExpires = 0;
    int exchangePassword = 0;
    int recording = 0;
    int certificates = 0;

    // "desk.toml:2: <what is wrong>"
    [[nodiscard]] tl::unexpected<Refusal> refusal(int line, std::string_view what) const;
};

[[nodiscard]] Outcome<> completeConfiguration(Configuration& configuration, ConfigurationPlaces const& places);

}  // namespace telephone
