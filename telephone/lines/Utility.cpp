#include "platform/lines/Utility.h"

#include "telephone/framework/Log.h"
#include "telephone/lines/LineActions.h"
#include "telephone/lines/Lines.h"

// Busy: the line itself can't carry another call. One that is held for a consultation can: the consultation.
bool Utility::isLineStateBusy(ELineState state)
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
        return false;
    }
    return false;
}

bool Utility::bridgeCall(Line* line)
{
    auto* const ours = dynamic_cast<telephone::TelephoneLine*>(line);
    if (ours == nullptr) {
        telephone::log(kLogFailure, "lines", "no call is joined: there is no such line");
        return false;
    }
    return ours->bridge();
}
