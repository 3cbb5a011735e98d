// Events, requests and times for the tests of what people read. Local time is UTC here.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <map>
#include <string>
#include <string_view>

#include "CommunicationsServiceEvents.h"
#include "telephone/display/ReadableLines.h"

namespace telephone::test {

using Values = std::map<std::string_view, std::string_view>;

inline std::string element(std::string_view tag, std::string_view value)
{
    std::string const name(tag);
    return "<" + name + ">" + std::string(value) + "</" + name + ">";
}

// The event with these values; elements that are not given are 0 or empty. The body has the tag "Body".
inline std::string eventText(std::string_view method, Values const& values)
{
    std::string text = element("Method", method);
    for (auto const& each : findEventDescription(method)->elements) {
        auto const given = values.find(each.tag);
        bool const isText = each.kind == EventElementKind::text || each.kind == EventElementKind::cutText ||
                            each.kind == EventElementKind::list || each.kind == EventElementKind::body;
        std::string_view const value = given != values.end() ? given->second : isText ? "" : "0";
        text += each.kind == EventElementKind::body ? std::string(value) : element(each.tag, value);
    }
    return text;
}

// "23:57:45.559" on the first of March 2026, in UTC.
inline ReadableLines::Time at(std::string_view text)
{
    std::string const digits(text);
    auto const number = [&digits](std::size_t place, std::size_t size) {
        return std::stoi(digits.substr(place, size));
    };
    using namespace std::chrono;
    return sys_days(year(2026) / March / 1) + hours(number(0, 2)) + minutes(number(3, 2)) + seconds(number(6, 2)) +
           milliseconds(number(9, 3));
}

// The options of the examples: numbers of 127.0.0.1:5060 are the telephone's own.
inline DisplayOptions options()
{
    setenv("TZ", "UTC", 1);
    tzset();
    DisplayOptions result;
    result.ownDomain = "127.0.0.1:5060";
    return result;
}

// One line without control characters: nothing in it controls a terminal.
inline bool isHarmless(std::string_view line)
{
    return std::all_of(line.begin(), line.end(),
                       [](char each) { return static_cast<unsigned char>(each) >= ' ' && each != '\x7f'; });
}

}  // namespace telephone::test
