// Serializes a list as its values separated by ",". A "\" precedes each "," and "\" inside a text, so that the list can
// be split again. An empty list is an empty text.
#include "platform/framework/Serializer.h"

namespace {

constexpr char kSeparator = ',';
constexpr char kEscape = '\\';

void appendSeparator(std::string& list, bool isFirst)
{
    if (!isFirst) {
        list += kSeparator;
    }
}

}  // namespace

std::string Serializer::serialize(std::vector<int> const& values)
{
    std::string list;
    for (std::size_t i = 0; i < values.size(); ++i) {
        appendSeparator(list, i == 0);
        list += std::to_string(values[i]);
    }
    return list;
}

std::string Serializer::serialize(std::vector<std::string> const& values)
{
    std::string list;
    for (std::size_t i = 0; i < values.size(); ++i) {
        appendSeparator(list, i == 0);
        for (char const each : values[i]) {
            if (each == kSeparator || each == kEscape) {
                list += kEscape;
            }
            list += each;
        }
    }
    return list;
}
