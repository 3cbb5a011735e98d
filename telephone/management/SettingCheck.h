// Whether a text may become the value of a setting.
#pragma once

#include <string>
#include <string_view>

#include "telephone/management/SettingOutcome.h"
#include "telephone/management/SettingRows.h"

namespace telephone {

// Longest value and longest key, in bytes.
constexpr std::size_t kLongestSetting = 4096;
constexpr std::size_t kLongestSettingKey = 256;

// Unknown key, wrong value. `normal` becomes the text as it is stored: "007" as "7".
SettingOutcome checkSetting(std::string_view key, std::string_view value, std::string& normal);

// What the row takes, for a person: "true or false", "a number from 0 to 99".
std::string expectedOf(SettingRow const& row);

}  // namespace telephone
