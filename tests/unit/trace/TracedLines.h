// Reads a trace that a test has written.
#pragma once

#include <sstream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "tests/doubles/TemporaryFolder.h"

namespace telephone::test {

// The header and the steps, in the order of the file.
inline std::vector<nlohmann::json> tracedLines(std::string const& file)
{
    std::vector<nlohmann::json> lines;
    std::istringstream content(contentOf(file));
    for (std::string line; std::getline(content, line);) {
        lines.push_back(nlohmann::json::parse(line));
    }
    return lines;
}

}  // namespace telephone::test
