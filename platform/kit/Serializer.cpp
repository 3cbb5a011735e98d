// A serializer that works, with the form of the reference telephone: values are separated by ",", and within a text "\"
// precedes each "," and "\".
#include "platform/framework/Serializer.h"

namespace {

std::string escaped(std::string const& text)
{
    std::string result;
    for (char const each : text) {
        if (each == ',' || each == '\\') {
            result += '\\';
        }
        result += each;
    }
    return result;
}

std::string joined(std::vector<std::string> const& texts)
{
    std::string result;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        result += (i == 0 ? "" : ",") + texts[i];
    }
    return result;
}

}  // namespace

std::string Serializer::serialize(std::vector<int> const& values)
{
    std::vector<std::string> texts;
    texts.reserve(values.size());
    for (int const value : values) {
        texts.push_back(std::to_string(value));
    }
    return joined(texts);
}

std::string Serializer::serialize(std::vector<std::string> const& values)
{
    std::vector<std::string> texts;
    texts.reserve(values.size());
    for (auto const& value : values) {
        texts.push_back(escaped(value));
    }
    return joined(texts);
}
