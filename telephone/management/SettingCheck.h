// Checks that a text may become the value of a setting.
#pragma once

#include <string>
#include <string_view>

#include "telephone/base/Refusal.h"
#include "telephone/management/SettingRows.h"

namespace telephone {

// Longest value and longest key, in bytes.
constexpr std::size_t kLongestSetting = 4096;
constexpr std::size_t kLongestSettingKey = 256;

// The text to store for a value: "7" for "007". Refused for an unknown key or an unsuitable value.
[[nodiscard]] Outcome<std::string> checkSetting(std::string_view key, std::string_view value);
// The same for a value that a person or an application sets: refused for a read-only setting too.
[[nodiscard]] Outcome<std::string> checkChange(std::string_view key, std::string_view value);

// The values that a setting takes, in words: "true or false", "a number from 0 to 99".
std::string expectedOf(SettingRow const& row);

}  // namespace telephone
