// What the state of a line follows from: its calls, and which of several states shows. Pure functions.
#pragma once

#include "platform/lines/ELineState.h"
#include "telephone/calls/CallSnapshot.h"

namespace telephone {

// The state that one call gives its line; idle for a call that is over.
ELineState lineStateOf(CallSnapshot const& call);

// The one of two states that a line with both shows: what rings or speaks comes before what waits.
ELineState morePressing(ELineState left, ELineState right);

// "idle", "ringing", ... as the console prints it.
char const* lineStateName(ELineState state);

}  // namespace telephone
