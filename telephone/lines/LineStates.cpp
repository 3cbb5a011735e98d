#include "telephone/lines/LineStates.h"

#include <array>

namespace telephone {

namespace {

struct StateRow
{
    ELineState state;
    int rank;  // the highest one shows
    char const* name;
};

constexpr std::array kStates{
    StateRow{eLineStateUnknown, 0, "unknown"},
    StateRow{eLineStateOutOfService, 1, "out of service"},
    StateRow{eLineStateIdle, 2, "idle"},
    StateRow{eLineStateDSSBusy, 3, "busy"},
    StateRow{eLineStateActiveElsewhere, 4, "active elsewhere"},
    StateRow{eLineStateConferenceHoldElsewhere, 5, "conference on hold elsewhere"},
    StateRow{eLineStateHoldElsewhere, 6, "on hold elsewhere"},
    StateRow{eLineStateRingingElsewhere, 7, "ringing elsewhere"},
    StateRow{eLineStateReserved, 8, "reserved"},
    StateRow{eLineStateHold, 9, "on hold"},
    StateRow{eLineStateHoldConsult, 10, "on hold for a consultation"},
    StateRow{eLineStateSelected, 11, "selected"},
    StateRow{eLineStateActive, 12, "active"},
    StateRow{eLineStateConference, 13, "conference"},
    StateRow{eLineStateRemoteRinging, 14, "remote ringing"},
    StateRow{eLineStateDialling, 15, "dialling"},
    StateRow{eLineStateRinging, 16, "ringing"},
};
static_assert(kStates.size() == 17, "every line state has a row");

constexpr StateRow const& rowOf(ELineState state)
{
    for (auto const& row : kStates) {
        if (row.state == state) {
            return row;
        }
    }
    return kStates.front();
}

ELineState heldState(CallSnapshot const& call)
{
    return call.heldForConsultation ? eLineStateHoldConsult : eLineStateHold;
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
        return heldState(call);
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
    return rowOf(right).rank > rowOf(left).rank ? right : left;
}

char const* lineStateName(ELineState state)
{
    return rowOf(state).name;
}

}  // namespace telephone
