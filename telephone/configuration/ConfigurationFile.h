// Reads the telephone's configuration from a TOML file. A wrong key, type or value is refused with the file, the line
// and the expected value. Keys that a file omits have their defaults (docs/configuration.md): a file without lines has
// the lines of the standard telephone, a file without keys gets one key for each line.
#pragma once

#include <string>
#include <string_view>

#include "telephone/base/Refusal.h"
#include "telephone/configuration/Configuration.h"

namespace telephone {

class ConfigurationFile
{
public:
    explicit ConfigurationFile(std::string path);

    [[nodiscard]] Outcome<Configuration> read() const;
    // Reads from a text instead. The path only serves to name it in messages.
    [[nodiscard]] Outcome<Configuration> parse(std::string_view text) const;

private:
    std::string path_;
};

}  // namespace telephone
