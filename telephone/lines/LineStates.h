// How the calls of a line give its state. Pure functions.
#pragma once

#include "platform/lines/ELineState.h"
#include "telephone/calls/CallSnapshot.h"

namespace telephone {

// The state that one call gives its line; idle for a call that has ended.
ELineState lineStateOf(CallSnapshot const& call);

// Ringing at this telephone.
bool isRinging(CallSnapshot const& call);
// On hold by this telephone, also for a consultation.
bool isHeld(CallSnapshot const& call);

// The state that a line shows when both apply: ringing and active calls take precedence over waiting ones.
ELineState morePressing(ELineState left, ELineState right);

// "idle", "ringing", ... as the console prints it.
char const* lineStateName(ELineState state);

}  // namespace telephone
