#include "telephone/program/CommonOptions.h"

#include <filesystem>

namespace telephone {

std::vector<std::string> commonOptions(CommandLine const& line)
{
    std::vector<std::string> words;
    if (!line.library.empty()) {
        words.insert(words.end(), {"--library", std::filesystem::absolute(line.library).string()});
    }
    words.insert(words.end(), {"--check", std::string(kCheckedTrafficWords[static_cast<std::size_t>(line.checked)])});
    if (line.withoutExchange) {
        words.emplace_back("--no-exchange");
    }
    return words;
}

}  // namespace telephone
