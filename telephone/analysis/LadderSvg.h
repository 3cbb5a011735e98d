// Draws a ladder as SVG, for a page: in light and dark as the reader prefers, with a title and a description that a
// screen reader reads. Every text is escaped. Pure function.
#pragma once

#include <cstddef>
#include <string>

#include "telephone/analysis/Ladder.h"

namespace telephone {

constexpr std::size_t kMostFarEndsInSvg = 6;

std::string ladderSvg(Ladder const& ladder);

}  // namespace telephone
