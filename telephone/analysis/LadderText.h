// Draws a ladder as text, for a terminal: one row for each arrow.
//
//     s   application                          service                 engine                          100
//       0.000  │─── OutgoingCallMakeRequest 100 ─▶│                       │                             │
//              │                                  │───── CallMake 100 ───▶│                             │
//              │                                  │                       │─────────── INVITE ─────────▶│
//
// The time is in seconds since the first row and stands where it changes. A far end's bar is thick while it talks and
// dotted while it is on hold. Four columns take 99 characters, and more if a text needs it; on a narrower terminal they
// are narrower. Pure function.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "telephone/analysis/Ladder.h"
#include "telephone/display/DisplayOptions.h"

namespace telephone {

// Application, service, engine, and these.
constexpr std::size_t kMostFarEndsInText = 2;

std::vector<std::string> ladderText(Ladder const& ladder, DisplayOptions const& options);

}  // namespace telephone
