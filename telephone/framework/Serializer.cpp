// Serializes a list as its values separated by ",". A "\" precedes each "," and "\" inside a text, so that the list can
// be split again. An empty list is an empty text.
#include "platform/framework/Serializer.h"

#include <spdlog/fmt/fmt.h>

std::string Serializer::serialize(std::vector<int> const& values)
{
    return fmt::format("{}", fmt::join(values, ","));
}

std::string Serializer::serialize(std::vector<std::string> const& values)
{
    std::vector<std::string> escaped;
    for (std::string const& value : values) {
        std::string& text = escaped.emplace_back();
        for (char const each : value) {
            text.append(each == ',' || each == '\\' ? 1 : 0, '\\') += each;
        }
    }
    return fmt::format("{}", fmt::join(escaped, ","));
}
