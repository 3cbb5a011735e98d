#include "telephone/lines/LineStates.h"

#include <algorithm>
#include <array>

namespace telephone {

namespace {

struct StateRow
{
    ELineState state;
    char const* name;
};

// In ascending order of precedence.
constexpr std::array kStates{
    StateRow{eLineStateUnknown, "unknown"},
    StateRow{eLineStateOutOfService, "out of service"},
    StateRow{eLineStateIdle, "idle"},
    StateRow{eLineStateDSSBusy, "busy"},
    StateRow{eLineStateActiveElsewhere, "active elsewhere"},
    StateRow{eLineStateConferenceHoldElsewhere, "conference held elsewhere"},
    StateRow{eLineStateHoldElsewhere, "held elsewhere"},
    StateRow{eLineStateRingingElsewhere, "ringing elsewhere"},
    StateRow{eLineStateReserved, "reserved"},
    StateRow{eLineStateHold, "held"},
    StateRow{eLineStateHoldConsult, "held for a consultation"},
    StateRow{eLineStateSelected, "selected"},
    StateRow{eLineStateActive, "active"},
    StateRow{eLineStateConference, "conference"},
    StateRow{eLineStateRemoteRinging, "remote ringing"},
    StateRow{eLineStateDialling, "dialling"},
    StateRow{eLineStateRinging, "ringing"},
};
static_assert(kStates.size() == 17, "every line state has a row");

constexpr StateRow const& rowOf(ELineState state)
{
    auto const row =
        std::find_if(kStates.begin(), kStates.end(), [state](StateRow const& each) { return each.state == state; });
    return row == kStates.end() ? kStates.front() : *row;
}

}  // namespace

ELineState lineStateOf(CallSnapshot const& call)
{
    switch (call.state) {
    case sfiCallStateDialling:
    case sfiCallStateProceeding:
        return eLineStateDialling;
    case sfiCallStateRemoteRinging:
        return eLineStateRemoteRinging;
    case sfiCallStateIncoming:
    case sfiCallStateRinging:
    case sfiCallStateAccepted:
        return eLineStateRinging;
    case sfiCallStateConnected:
    case sfiCallStateRemotelyHeld:
    case sfiCallStateTransferring:
        return eLineStateActive;
    case sfiCallStateHeld:
    case sfiCallStateHeldByBoth:
        return call.heldForConsultation ? eLineStateHoldConsult : eLineStateHold;
    case sfiCallStateConference:
        return eLineStateConference;
    case sfiCallStateIdle:
    case sfiCallStateClearing:
    case sfiCallStateBusy:
    case sfiCallStateFailed:
        return eLineStateIdle;
    }
    return eLineStateIdle;
}

bool isRinging(CallSnapshot const& call)
{
    return lineStateOf(call) == eLineStateRinging;
}

bool isHeld(CallSnapshot const& call)
{
    auto const state = lineStateOf(call);
    return state == eLineStateHold || state == eLineStateHoldConsult;
}

ELineState morePressing(ELineState left, ELineState right)
{
    return &rowOf(right) > &rowOf(left) ? right : left;
}

char const* lineStateName(ELineState state)
{
    return rowOf(state).name;
}

}  // namespace telephone
