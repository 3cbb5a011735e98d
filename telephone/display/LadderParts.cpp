#include "telephone/display/LadderParts.h"

#include <algorithm>

#include <spdlog/fmt/fmt.h>
#include <spdlog/fmt/ranges.h>

#include "telephone/display/SafeText.h"

namespace telephone {

namespace {

constexpr LadderGlyphs kUtf8Glyphs{"│", "║", "┊", "─", "◀", "▶", "═", "┄", "✕", "…"};
constexpr LadderGlyphs kAsciiGlyphs{"|", "#", ":", "-", "<", ">", "=", ".", "x", "..."};

std::string repeated(std::string_view text, std::size_t count)
{
    std::string result;
    for (std::size_t index = 0; index < count; ++index) {
        result += text;
    }
    return result;
}

}  // namespace

LadderGlyphs const& ladderGlyphs(DisplayOptions const& options)
{
    return options.ascii ? kAsciiGlyphs : kUtf8Glyphs;
}

std::string centredText(std::string_view text, std::size_t width, std::string_view filling,
                        DisplayOptions const& options)
{
    constexpr std::size_t kShortestFilling = 2;  // with a blank, on each side
    std::string shown = options.ascii ? asciiText(text) : std::string(text);
    std::size_t const room = width - 2 * kShortestFilling;
    if (columnsOf(shown) > room) {
        std::string_view const ellipsis = ladderGlyphs(options).ellipsis;
        shown = std::string(beginningOf(shown, room - std::min(room, columnsOf(ellipsis)))).append(ellipsis);
    }
    std::size_t const free = width - columnsOf(shown) - 2;
    return repeated(filling, free / 2) + " " + shown + " " + repeated(filling, free - free / 2);
}

std::string arrowText(ArrowDirection direction, std::string_view text, std::size_t width, DisplayOptions const& options)
{
    if (direction == ArrowDirection::kNone) {
        return std::string(width, ' ');
    }
    LadderGlyphs const& glyphs = ladderGlyphs(options);
    std::string const shaft = centredText(text, width - 1, glyphs.shaft, options);
    bool const isLeft = direction == ArrowDirection::kLeft;
    return isLeft ? std::string(glyphs.leftHead) + shaft : shaft + std::string(glyphs.rightHead);
}

std::string requestLabel(RequestWords const& request)
{
    auto const destination = std::find_if(request.values.begin(), request.values.end(),
                                          [](RequestValue const& each) { return each.tag == "Destination"; });
    if (destination != request.values.end()) {
        return request.name + " " + destination->text;
    }
    return request.call.empty() ? request.name : request.name + ", call " + request.call;
}

std::string eventLabel(std::string_view method, MessageWords const& words)
{
    bool const isPlainState = method == "CallStateChangeEvent" && words.what != "idle" && words.what != "failed";
    return isPlainState || words.details.empty() ? words.what
                                                 : fmt::format("{}, {}", words.what, fmt::join(words.details, ", "));
}

}  // namespace telephone
