#include "telephone/management/SettingCheck.h"

#include <charconv>
#include <optional>

#include <spdlog/fmt/fmt.h>

#include "telephone/base/Names.h"
#include "telephone/configuration/Choices.h"

namespace telephone {

namespace {

// A value as messages show it: shortened, and without control characters.
std::string shown(std::string_view value)
{
    constexpr std::size_t kShown = 40;
    std::string text(value.substr(0, kShown));
    for (auto& character : text) {
        if (static_cast<unsigned char>(character) < 0x20 || character == 0x7f) {
            character = '?';
        }
    }
    return value.size() > kShown ? text + "..." : text;
}

std::optional<int> numberIn(std::string_view value)
{
    int number = 0;
    auto const [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
    if (error != std::errc() || end != value.data() + value.size()) {
        return std::nullopt;
    }
    return number;
}

bool isText(SettingRow const& row, std::string_view value)
{
    return value.size() <= kLongestSetting && value.find('\0') == std::string_view::npos &&
           (row.choices.empty() || placeOfChoice(row.choices, value));
}

// The text to store; nothing: the row does not take the value.
std::optional<std::string> normalised(SettingRow const& row, std::string_view value)
{
    switch (row.type) {
    case SettingType::kFlag:
        return value == "true" || value == "false" ? std::optional(std::string(value)) : std::nullopt;
    case SettingType::kNumber: {
        auto const number = numberIn(value);
        bool const inRange = number && *number >= row.minimum && *number <= row.maximum;
        return inRange ? std::optional(std::to_string(*number)) : std::nullopt;
    }
    case SettingType::kText:
        return isText(row, value) ? std::optional(std::string(value)) : std::nullopt;
    }
    return std::nullopt;
}

}  // namespace

std::string expectedOf(SettingRow const& row)
{
    switch (row.type) {
    case SettingType::kFlag:
        return "true or false";
    case SettingType::kNumber:
        return fmt::format("a number from {} to {}", row.minimum, row.maximum);
    case SettingType::kText:
        break;
    }
    if (row.choices.empty()) {
        return fmt::format("a text of at most {} bytes without a NUL", kLongestSetting);
    }
    return listOfChoices(row.choices);
}

Outcome<std::string> checkSetting(std::string_view key, std::string_view value)
{
    auto const* row = findSettingRow(key);
    if (row == nullptr) {
        return refuse(RefusalKind::kNotFound,
                      fmt::format("there is no setting \"{}\"; the nearest is \"{}\"", shown(key),
                                  nearestName(key, namesOf(kSettingRows, &SettingRow::name))));
    }
    if (key.size() > kLongestSettingKey || key.find('\0') != std::string_view::npos) {
        return refuse(RefusalKind::kNotFound, fmt::format("the key \"{}\" is longer than {} bytes or contains a NUL",
                                                          shown(key), kLongestSettingKey));
    }
    auto normal = normalised(*row, value);
    if (!normal) {
        return refuse(RefusalKind::kBadInput,
                      fmt::format("\"{}\" takes {}, not \"{}\"", shown(key), expectedOf(*row), shown(value)));
    }
    return *std::move(normal);
}

Outcome<std::string> checkChange(std::string_view key, std::string_view value)
{
    auto checked = checkSetting(key, value);
    if (checked && findSettingRow(key)->access == SettingAccess::kReadOnly) {
        return refuse(RefusalKind::kNotPermitted, fmt::format("\"{}\" is read-only", key));
    }
    return checked;
}

}  // namespace telephone
