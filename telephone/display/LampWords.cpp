#include "telephone/display/LampWords.h"

#include <algorithm>
#include <iterator>

#include <spdlog/fmt/fmt.h>

namespace telephone {

namespace {

struct LampPicture
{
    std::string_view mode;
    std::string_view picture;
    std::string_view watchedParty;  // what the lamp of a watched party says with it
};

constexpr LampPicture kLampPictures[] = {
    {"off", "[      ]", ""},
    {"steady", "[======]", "busy"},
    {"flashing", "[==  ==]", "ringing"},
    {"fluttering", "[= = = ]", "do-not-disturb"},
};

LampPicture const& pictureOf(LampState const& lamp)
{
    auto const* const found = std::find_if(std::begin(kLampPictures), std::end(kLampPictures),
                                           [&](LampPicture const& each) { return each.mode == lamp.mode; });
    return found == std::end(kLampPictures) ? kLampPictures[0] : *found;
}

// The line or appearance of that id; null for none.
LineStatus const* findLine(std::vector<LineStatus> const& lines, std::string_view id)
{
    for (LineStatus const& line : lines) {
        if (line.id == id) {
            return &line;
        }
        if (LineStatus const* const appearance = findLine(line.appearances, id)) {
            return appearance;
        }
    }
    return nullptr;
}

}  // namespace

std::string lampName(KeyState const& key)
{
    return key.number == 0 ? key.function : std::to_string(key.number);
}

std::string lampWords(LampState const& lamp)
{
    return lamp.colour == "none" || lamp.mode == "off" ? lamp.mode : lamp.mode + " " + lamp.colour;
}

Style lampStyle(LampState const& lamp)
{
    if (lamp.mode == "off") {
        return Style::kPlain;
    }
    return lamp.colour == "green"   ? Style::kGreen
           : lamp.colour == "red"   ? Style::kRed
           : lamp.colour == "amber" ? Style::kYellow
                                    : Style::kPlain;
}

std::string_view lampPicture(LampState const& lamp)
{
    return pictureOf(lamp).picture;
}

std::string lampMeaning(KeyState const& key, TelephoneState const& state)
{
    if (LineStatus const* const line = findLine(state.lines, key.target)) {
        bool const isOut = line->registration == "not registered";
        return isOut ? line->registration : line->state == "idle" ? "" : line->state;
    }
    if (key.function == "hold") {
        auto const held =
            std::count_if(state.calls.begin(), state.calls.end(), [](CallStatus const& call) { return call.heldHere; });
        return held == 0 ? "" : fmt::format("{} {} held", held, held == 1 ? "call" : "calls");
    }
    return std::string(key.function == "blf" ? pictureOf(key.lamp).watchedParty : "");
}

}  // namespace telephone
