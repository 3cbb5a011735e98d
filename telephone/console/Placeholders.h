// Placeholders in the lines of a script: {CallID} stands for the value of the element CallID in the events that waits
// took. Other braces are ordinary text. Pure functions.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "telephone/base/Refusal.h"

namespace telephone {

// The value of a tag; nothing: unknown.
using PlaceholderValues = std::function<std::optional<std::string>(std::string_view tag)>;

[[nodiscard]] bool hasPlaceholder(std::string_view text);

// Refused for a placeholder without a value.
[[nodiscard]] Outcome<std::string> replacePlaceholders(std::string text, PlaceholderValues const& values);

}  // namespace telephone
