// What the parts of a configuration must be to one another: line ids, numbers and keys only once, targets that exist,
// addresses that are some. Fills in what follows from the rest. ConfigurationFile uses it once the file is read.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "telephone/configuration/Configuration.h"

namespace telephone {

// Where in the file things stand: its lines, counted from 1; 0 for what it does not hold.
struct ConfigurationPlaces
{
    std::vector<int> lines;  // of each [[line]]
    std::vector<int> keys;   // of each [[key]]
    int sip = 0;
    int server = 0;
    int push = 0;
};

// Says what is wrong at a line of the file; does not return.
using ConfigurationRefusal = std::function<void(int line, std::string const& what)>;

void completeConfiguration(Configuration& configuration, ConfigurationPlaces const& places,
                           ConfigurationRefusal const& refuse);

}  // namespace telephone
