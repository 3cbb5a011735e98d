// Reads the telephone's configuration from a TOML file. A wrong key, type or value is refused with file, line and what
// was expected. What a file leaves out has its default (docs/configuration.md): a file without lines describes the
// standard telephone's, one without keys gets a key for each line.
#pragma once

#include <string>
#include <string_view>

#include "telephone/configuration/Configuration.h"
#include "telephone/configuration/ConfigurationError.h"

namespace telephone {

class ConfigurationFile
{
public:
    explicit ConfigurationFile(std::string path);

    // Throws ConfigurationError.
    Configuration read() const;
    // The same of a text that is at hand; the path only names it in messages.
    Configuration parse(std::string_view text) const;

private:
    std::string path_;
};

}  // namespace telephone
