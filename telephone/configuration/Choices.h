// The texts that a field or a setting permits, in one text separated by "|".
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace telephone {

// The position of a text among the choices, from 0; nothing: not one of them.
inline std::optional<int> placeOfChoice(std::string_view choices, std::string_view text)
{
    for (int place = 0; !choices.empty(); ++place) {
        auto const end = choices.find('|');
        if (choices.substr(0, end) == text) {
            return place;
        }
        choices = end == std::string_view::npos ? std::string_view() : choices.substr(end + 1);
    }
    return std::nullopt;
}

// "one of udp, tcp".
inline std::string listOfChoices(std::string_view choices)
{
    std::string list = "one of ";
    for (auto const character : choices) {
        list += character == '|' ? ", " : std::string(1, character);
    }
    return list;
}

}  // namespace telephone
