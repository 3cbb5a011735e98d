#include "telephone/configuration/TomlFile.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <spdlog/fmt/fmt.h>

#include "telephone/configuration/FilePlace.h"

namespace telephone {

Outcome<std::string> readFileText(std::string const& path, std::string_view what)
{
    auto const refusal = [&](char const* why) {
        return refuse(RefusalKind::kUnavailable, fmt::format("{} \"{}\" cannot be read: {}", what, path, why));
    };
    std::error_code unknown;
    if (std::filesystem::is_directory(path, unknown)) {
        return refusal("it is a folder");
    }
    std::ifstream file(path);
    if (!file) {
        return refusal(std::strerror(errno));
    }
    std::ostringstream text;
    text << file.rdbuf();
    if (file.bad()) {
        return refusal(std::strerror(errno));
    }
    return text.str();
}

Outcome<toml::table> parseToml(std::string_view text, std::string const& path)
{
    try {
        return toml::parse(text, path);
    } catch (toml::parse_error const& error) {
        return refuseAt(path, fileLineOf(error.source()), error.description());
    }
}

int fileLineOf(toml::source_region const& region)
{
    return static_cast<int>(region.begin.line);
}

std::string valueInWords(toml::node const& node)
{
    if (auto const text = node.value_exact<std::string>()) {
        return fmt::format("the text \"{}\"", *text);
    }
    if (auto const number = node.value_exact<std::int64_t>()) {
        return fmt::format("the integer {}", *number);
    }
    if (auto const flag = node.value_exact<bool>()) {
        return *flag ? "true" : "false";
    }
    std::ostringstream text;
    if (auto const* array = node.as_array()) {
        text << "the array " << *array;
    } else {
        text << "a value of type " << node.type();
    }
    return text.str();
}

}  // namespace telephone
