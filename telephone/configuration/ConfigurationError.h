// What is wrong with a configuration file: file, line, and what was expected.
#pragma once

#include <stdexcept>

namespace telephone {

class ConfigurationError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

}  // namespace telephone
