#include "telephone/lines/TelephoneLine.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "telephone/framework/Log.h"
#include "telephone/lines/LineActions.h"
#include "telephone/lines/LineStates.h"
#include "telephone/lines/Lines.h"
#include "telephone/lines/ServerFeatures.h"

namespace telephone {

TelephoneLine::TelephoneLine(Lines& lines, LineConfiguration const& configuration, LineAddress place)
    : lines_(lines)
    , configuration_(configuration)
    , place_(std::move(place))
    , data_(configuration, place_.lineURI)
    , inService_(!configuration.registers)
{}

void TelephoneLine::keyPressed()
{
    lines_.actions().linePressed(*this);
}

// A direct-station key may also name a line of this telephone.
void TelephoneLine::dssKeyPressed(EDSSContext context, std::string const& digits, std::string const& ringingLineURI)
{
    if (data_.getDSSMonitorOnly()) {
        log(kLogFailure, "lines", "the key does nothing: it only shows line {}", id());
        return;
    }
    lines_.actions().stationPressed(digits.empty() ? userOfLine(configuration_) : digits, context, ringingLineURI);
}

ELineState TelephoneLine::getLineState()
{
    std::lock_guard const lock(lines_.calls());
    return state();
}

sfiResult TelephoneLine::retrieve()
{
    std::lock_guard const lock(lines_.calls());
    if (elsewhere_.state != eLineStateHoldElsewhere && elsewhere_.state != eLineStateConferenceHoldElsewhere) {
        log(kLogFailure, "lines", "line {} takes nothing back: no other telephone holds a call on it", id());
        return sfiFailure;
    }
    return lines_.actions().takeOver(elsewhere_.dialog, id());
}

std::string TelephoneLine::getLastNotifyRemoteURI()
{
    std::lock_guard const lock(lines_.calls());
    return remoteURI_;
}

int TelephoneLine::getChildBCALineIdReservedForConsultationCall()
{
    std::lock_guard const lock(lines_.calls());
    auto const& places = base().appearances_;
    auto const reserved = std::find_if(places.begin(), places.end(), [](TelephoneLine const* appearance) {
        return appearance->seizure_ == eLineStateReserved;
    });
    return reserved == places.end() ? 0 : (*reserved)->place_.recordLine;
}

void TelephoneLine::getServerFeaturesSettings(serverFeaturesSettings& settings)
{
    settings = ServerFeatures(lines_.settings(), configuration_.id).read();
}

void TelephoneLine::setDNDConfiguration(bool on)
{
    ServerFeatures(lines_.settings(), configuration_.id).setDoNotDisturb(on);
}

void TelephoneLine::setForwardingConfiguration(sfiForwardingType type, bool on, std::string const& destination,
                                               int ringCount)
{
    ServerFeatures(lines_.settings(), configuration_.id).setForwarding(type, {on, destination, ringCount});
}

void TelephoneLine::setMissedCallIndicated(bool indicated)
{
    std::lock_guard const lock(lines_.calls());
    lines_.setMissedCall(*this, indicated);
}

bool TelephoneLine::bridge()
{
    std::lock_guard const lock(lines_.calls());
    if (configuration_.sharedLineType != LineData::kBridgedLine) {
        log(kLogFailure, "lines", "no call is joined: line {} is not bridged", id());
    } else if (elsewhere_.state != eLineStateActiveElsewhere) {
        log(kLogFailure, "lines", "no call is joined: no other telephone speaks on line {}", id());
    } else {
        log(kLogFailure, "lines", "no call is joined on line {}: the call control does not offer Join (RFC 3911)",
            id());
    }
    return false;
}

ELineState TelephoneLine::state() const
{
    if (!appearances_.empty()) {
        auto shown = appearances_.front()->state();
        for (auto const* appearance : appearances_) {
            shown = morePressing(shown, appearance->state());
        }
        return elsewhere_.state == eLineStateIdle ? shown : morePressing(shown, elsewhere_.state);
    }
    auto shown = inService_ ? eLineStateIdle : eLineStateOutOfService;
    shown = inService_ ? morePressing(shown, seizure_) : shown;
    for (auto const& call : calls_) {
        auto const ofCall = lineStateOf(call);
        shown = ofCall == eLineStateIdle ? shown : morePressing(shown, ofCall);
    }
    return elsewhere_.state == eLineStateIdle ? shown : morePressing(shown, elsewhere_.state);
}

std::optional<CallSnapshot> TelephoneLine::callInState(ELineState state) const
{
    auto const call = std::find_if(calls_.begin(), calls_.end(),
                                   [state](CallSnapshot const& each) { return lineStateOf(each) == state; });
    return call == calls_.end() ? std::nullopt : std::optional(*call);
}

void TelephoneLine::noteCall(CallSnapshot const& call)
{
    auto const known = std::find_if(calls_.begin(), calls_.end(),
                                    [&call](CallSnapshot const& each) { return each.callID == call.callID; });
    if (!call.remoteURI.empty()) {
        remoteURI_ = call.remoteURI;
    }
    if (call.ended()) {
        if (known != calls_.end()) {
            calls_.erase(known);
        }
    } else if (known == calls_.end()) {
        calls_.push_back(call);
    } else {
        *known = call;
    }
}

}  // namespace telephone
