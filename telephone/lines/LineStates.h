// Derives the state of a line from its calls. Pure functions.
#pragma once

#include <algorithm>
#include <optional>
#include <vector>

#include "platform/lines/ELineState.h"
#include "telephone/calls/CallSnapshot.h"

namespace telephone {

// The state that one call gives its line; idle for a call that has ended.
ELineState lineStateOf(CallSnapshot const& call);

// Ringing at this telephone.
bool isRinging(CallSnapshot const& call);
// On hold by this telephone, also for a consultation.
bool isHeld(CallSnapshot const& call);

// The first call for which the predicate holds.
template <typename Predicate>
std::optional<CallSnapshot> firstCall(std::vector<CallSnapshot> const& calls, Predicate matches)
{
    auto const found = std::find_if(calls.begin(), calls.end(), matches);
    return found == calls.end() ? std::nullopt : std::optional(*found);
}

// The state that a line shows when both apply: ringing and active calls take precedence over waiting ones.
ELineState morePressing(ELineState left, ELineState right);

// "idle", "remote ringing", "held elsewhere": what people read. Line states are not sent, so they have no enumeration
// in the protocol; where a state means the same as a CallState, it has its name.
char const* lineStateName(ELineState state);

}  // namespace telephone
