// What standard output can show: whether it is a terminal, how wide, in which characters and colours. Pure queries.
#pragma once

#include <cstddef>

#include "telephone/display/DisplayOptions.h"

namespace telephone {

enum class ColourUse
{
    kAuto,  // on a terminal, unless NO_COLOR is set or TERM is dumb
    kAlways,
    kNever,
};

// In columns; 0: standard output is not a terminal, or does not say.
[[nodiscard]] std::size_t terminalWidth();

// Sets the colour, the width and the characters: ASCII unless the locale of the environment is in UTF-8.
void fitToTerminal(DisplayOptions& options, ColourUse colour);

}  // namespace telephone
