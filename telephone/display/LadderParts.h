// What drawings of calls as ladders have in common: their characters, an arrow with its text in the middle, and the
// texts of requests and events. Pure functions.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "telephone/display/DisplayOptions.h"
#include "telephone/display/ElementWords.h"
#include "telephone/display/RequestWords.h"

namespace telephone {

struct LadderGlyphs
{
    std::string_view bar;
    std::string_view talkBar;  // of a far end while it talks
    std::string_view holdBar;  // and while it is on hold
    std::string_view shaft;
    std::string_view leftHead;
    std::string_view rightHead;
    std::string_view talk;
    std::string_view onHold;
    std::string_view cross;
    std::string_view ellipsis;
};

LadderGlyphs const& ladderGlyphs(DisplayOptions const& options);

enum class ArrowDirection
{
    kNone,
    kLeft,
    kRight,
};

// The text in the middle of the width, cut if necessary. The width must be 6 or more; the text must be safe.
std::string centredText(std::string_view text, std::size_t width, std::string_view filling,
                        DisplayOptions const& options);

// An arrow of that width with its text; blanks without a direction.
std::string arrowText(ArrowDirection direction, std::string_view text, std::size_t width,
                      DisplayOptions const& options);

// "HoldCall, call 1", "OutgoingCallMakeRequest 100".
std::string requestLabel(RequestWords const& request);

// "remote ringing", "idle, cancelled". The party is left out: it stands in the column of the far end. A state is said
// in a word, unless there is a reason for it.
std::string eventLabel(std::string_view method, MessageWords const& words);

}  // namespace telephone
