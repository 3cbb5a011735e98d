#include "platform/lines/Utility.h"

#include "telephone/framework/Refusals.h"
#include "telephone/lines/TelephoneLine.h"

// A busy line has no place for another call. A line on hold for a consultation has one: for the consultation call.
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
    telephone::Outcome<> const joined =
        ours == nullptr ? telephone::refuse(telephone::RefusalKind::kNotFound, "there is no such line")
                        : ours->bridge();
    return !telephone::reportIfRefused("lines", joined);
}
