#include "platform/lines/Utility.h"

#include "platform/kit/Missing.h"
#include "platform/kit/Weak.h"

// It works: its contract is a table.
KIT_WEAK bool Utility::isLineStateBusy(ELineState state)
{
    switch (state) {
    case eLineStateDialling:
    case eLineStateRemoteRinging:
    case eLineStateRinging:
    case eLineStateActive:
    case eLineStateDSSBusy:
    case eLineStateHold:
    case eLineStateConference:
    case eLineStateHoldElsewhere:
    case eLineStateActiveElsewhere:
    case eLineStateConferenceHoldElsewhere:
    case eLineStateRingingElsewhere:
        return true;
    case eLineStateUnknown:
    case eLineStateIdle:
    case eLineStateHoldConsult:
    case eLineStateOutOfService:
    case eLineStateSelected:
    case eLineStateReserved:
        break;
    }
    return false;
}

KIT_WEAK bool Utility::bridgeCall(Line* /*line*/)
{
    kit::Missing const missing{"Utility", "platform/lines/Utility.h"};
    missing.report("bridgeCall", "join the call of the bridged line");
    return false;
}
