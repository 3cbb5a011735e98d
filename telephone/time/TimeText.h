// Moments as the telephone writes them, in JSON and in messages: in UTC, with milliseconds. Pure functions.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace telephone {

// "2026-03-01T12:00:00.000Z".
std::string timeText(std::chrono::system_clock::time_point time);

// The moment of such a text; nothing for any other.
std::optional<std::chrono::system_clock::time_point> readTime(std::string_view text);

}  // namespace telephone
