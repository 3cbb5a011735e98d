#include "telephone/sip/Message.h"

#include <algorithm>
#include <charconv>

namespace telephone::sip {

namespace {

std::string onOneLine(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](char character) { return character == '\r' || character == '\n'; }, ' ');
    return text;
}

}  // namespace

std::string Headers::value(std::string_view name) const
{
    for (auto const& header : list_) {
        if (equalsIgnoringCase(header.name, name)) {
            return header.value;
        }
    }
    return {};
}

std::vector<std::string> Headers::values(std::string_view name) const
{
    std::vector<std::string> found;
    for (auto const& header : list_) {
        if (equalsIgnoringCase(header.name, name)) {
            found.push_back(header.value);
        }
    }
    return found;
}

std::vector<std::string> Headers::list(std::string_view name) const
{
    std::vector<std::string> all;
    for (auto const& value : values(name)) {
        for (auto& element : splitList(value)) {
            all.push_back(std::move(element));
        }
    }
    return all;
}

std::uint32_t Headers::number(std::string_view name) const
{
    std::string const text = value(name);
    std::uint32_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

bool Headers::lists(std::string_view name, std::string_view element) const
{
    auto const all = list(name);
    return std::any_of(all.begin(), all.end(),
                       [element](std::string const& each) { return equalsIgnoringCase(each, element); });
}

bool Headers::has(std::string_view name) const
{
    return std::any_of(list_.begin(), list_.end(),
                       [name](Header const& header) { return equalsIgnoringCase(header.name, name); });
}

std::string Headers::format() const
{
    std::string text;
    for (auto const& header : list_) {
        text += onOneLine(header.name) + ": " + onOneLine(header.value) + "\r\n";
    }
    return text;
}

std::optional<Replaces> Replaces::parse(std::string_view value)
{
    Replaces replaces;
    std::string_view rest = value;
    bool first = true;
    while (!rest.empty() || first) {
        auto const end = rest.find(';');
        std::string_view part = rest.substr(0, end);
        rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
        while (!part.empty() && part.front() == ' ') {
            part.remove_prefix(1);
        }
        while (!part.empty() && part.back() == ' ') {
            part.remove_suffix(1);
        }
        auto const equals = part.find('=');
        std::string_view const name = part.substr(0, equals);
        if (first) {
            replaces.callId = part;
        } else if (equalsIgnoringCase(name, "early-only")) {
            replaces.earlyOnly = true;
        } else if (equals != std::string_view::npos && equalsIgnoringCase(name, "to-tag")) {
            replaces.toTag = part.substr(equals + 1);
        } else if (equals != std::string_view::npos && equalsIgnoringCase(name, "from-tag")) {
            replaces.fromTag = part.substr(equals + 1);
        }
        first = false;
    }
    if (replaces.callId.empty() || replaces.toTag.empty() || replaces.fromTag.empty()) {
        return std::nullopt;
    }
    return replaces;
}

std::string Replaces::format() const
{
    return callId + ";to-tag=" + toTag + ";from-tag=" + fromTag + (earlyOnly ? ";early-only" : "");
}

}  // namespace telephone::sip
