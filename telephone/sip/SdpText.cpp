#include "telephone/sip/SdpText.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <vector>

namespace telephone::sip {

namespace {

constexpr std::string_view kMap = "a=rtpmap:";
constexpr std::string_view kParameters = "a=fmtp:";

struct StaticType
{
    std::string_view payloadType;
    std::string_view encoding;
};

// RFC 3551 section 6.
constexpr auto kStaticTypes = std::to_array<StaticType>({{"0", "PCMU/8000"}, {"8", "PCMA/8000"}});

bool isNumber(std::string_view text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
}

// Removes and returns what comes before the separator, or everything.
std::string_view takeUntil(std::string_view& text, char separator)
{
    auto const end = std::min(text.find(separator), text.size());
    auto const taken = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return taken;
}

// "0 PCMU/8000", "97 opus/48000/2".
bool isMap(std::string_view value)
{
    bool const numbered = isNumber(takeUntil(value, ' '));
    auto const name = takeUntil(value, '/');
    return numbered && !name.empty() && isNumber(takeUntil(value, '/'));
}

// "101 0-15".
bool isParameters(std::string_view value)
{
    return isNumber(takeUntil(value, ' ')) && !value.empty();
}

bool isMalformed(std::string_view line)
{
    return (line.starts_with(kMap) && !isMap(line.substr(kMap.size()))) ||
           (line.starts_with(kParameters) && !isParameters(line.substr(kParameters.size())));
}

std::vector<std::string_view> linesOf(std::string_view text)
{
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        std::string_view line = takeUntil(text, '\n');
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        if (!isMalformed(line)) {
            lines.push_back(line);
        }
    }
    return lines;
}

using Line = std::vector<std::string_view>::const_iterator;

bool lists(std::string_view mediaLine, std::string_view payloadType)
{
    for (int i = 0; i < 3; ++i) {
        takeUntil(mediaLine, ' ');  // "m=audio", port and protocol
    }
    while (!mediaLine.empty()) {
        if (takeUntil(mediaLine, ' ') == payloadType) {
            return true;
        }
    }
    return false;
}

bool isMapped(Line line, Line end, std::string_view payloadType)
{
    return std::any_of(line, end, [payloadType](std::string_view each) {
        return each.starts_with(kMap) && each.substr(kMap.size()).starts_with(std::string(payloadType) + " ");
    });
}

// The missing maps of the medium whose lines these are, the first of them its "m=".
std::string missingMaps(Line line, Line end)
{
    std::string maps;
    for (auto const& type : kStaticTypes) {
        if (lists(*line, type.payloadType) && !isMapped(line, end, type.payloadType)) {
            maps.append(kMap).append(type.payloadType).append(" ").append(type.encoding).append("\r\n");
        }
    }
    return maps;
}

}  // namespace

std::string completedDescription(std::string_view description)
{
    auto const lines = linesOf(description);
    auto const isMedium = [](std::string_view line) { return line.starts_with("m="); };
    std::string completed;
    for (Line line = lines.begin(); line != lines.end();) {
        auto const next = std::find_if(line + 1, lines.end(), isMedium);
        std::string const maps = line->starts_with("m=audio ") ? missingMaps(line, next) : std::string();
        for (; line != next; ++line) {
            completed.append(*line).append("\r\n");
        }
        completed += maps;
    }
    return completed;
}

std::string withProfile(std::string description, std::string_view profile)
{
    auto const line = description.find("m=audio ");
    auto const port = description.find(' ', line);
    auto const begin = description.find(' ', port + 1) + 1;
    auto const end = description.find(' ', begin);
    return line == std::string::npos ? description : description.replace(begin, end - begin, profile);
}

}  // namespace telephone::sip
