#include "telephone/management/SettingCheck.h"

#include <charconv>
#include <optional>

#include <spdlog/fmt/fmt.h>

#include "telephone/configuration/Choices.h"
#include "telephone/configuration/NearestName.h"

namespace telephone {

namespace {

// The value as a message shows it: a huge or binary one would fill the log.
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

SettingOutcome refuse(SettingRefusal refusal, std::string reason)
{
    return {refusal, std::move(reason)};
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

bool acceptsNumber(SettingRow const& row, std::string_view value, std::string& normal)
{
    auto const number = numberIn(value);
    if (!number || *number < row.minimum || *number > row.maximum) {
        return false;
    }
    normal = std::to_string(*number);
    return true;
}

bool accepts(SettingRow const& row, std::string_view value, std::string& normal)
{
    normal = value;
    switch (row.type) {
    case SettingType::kFlag:
        return value == "true" || value == "false";
    case SettingType::kNumber:
        return acceptsNumber(row, value, normal);
    case SettingType::kText:
        return value.size() <= kLongestSetting && value.find('\0') == std::string_view::npos &&
               (row.choices.empty() || placeOfChoice(row.choices, value));
    }
    return false;
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

SettingOutcome checkSetting(std::string_view key, std::string_view value, std::string& normal)
{
    auto const* row = findSettingRow(key);
    if (row == nullptr) {
        auto const nearest = nearestName(key, kSettingRows, &SettingRow::name);
        return refuse(SettingRefusal::kUnknownKey,
                      fmt::format("there is no setting \"{}\"; the nearest is \"{}\"", shown(key), nearest));
    }
    if (key.size() > kLongestSettingKey || key.find('\0') != std::string_view::npos) {
        return refuse(SettingRefusal::kUnknownKey, fmt::format("the key \"{}\" is longer than {} bytes or holds a NUL",
                                                               shown(key), kLongestSettingKey));
    }
    if (!accepts(*row, value, normal)) {
        return refuse(SettingRefusal::kWrongValue,
                      fmt::format("\"{}\" takes {}, not \"{}\"", shown(key), expectedOf(*row), shown(value)));
    }
    return {};
}

}  // namespace telephone
