#include "platform/lines/Utility.h"

#include <algorithm>
#include <array>

#include "telephone/framework/Refusals.h"
#include "telephone/lines/LogComponent.h"
#include "telephone/lines/TelephoneLine.h"

// A busy line has no place for another call. A line on hold for a consultation has one: for the consultation call.
bool Utility::isLineStateBusy(ELineState state)
{
    constexpr std::array kBusy{
        eLineStateDialling,         eLineStateRemoteRinging,
        eLineStateRinging,          eLineStateActive,
        eLineStateDSSBusy,          eLineStateHold,
        eLineStateConference,       eLineStateHoldElsewhere,
        eLineStateActiveElsewhere,  eLineStateConferenceHoldElsewhere,
        eLineStateRingingElsewhere,
    };
    return std::find(kBusy.begin(), kBusy.end(), state) != kBusy.end();
}

bool Utility::bridgeCall(Line* line)
{
    auto* const ours = dynamic_cast<telephone::TelephoneLine*>(line);
    telephone::Outcome<> const joined =
        ours == nullptr ? telephone::refuse(telephone::RefusalKind::kNotFound, "there is no such line")
                        : ours->bridge();
    return !telephone::reportIfRefused(telephone::kComponent, joined);
}
