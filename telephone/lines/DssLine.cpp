#include "telephone/lines/DssLine.h"

#include <mutex>
#include <utility>

#include "telephone/framework/Log.h"
#include "telephone/lines/LineActions.h"
#include "telephone/lines/Lines.h"

namespace telephone {

namespace {

LineConfiguration configurationOf(KeyConfiguration const& key)
{
    LineConfiguration line;
    line.id = key.target;
    line.description = key.label;
    line.visibleOnOverview = false;
    line.overviewPosition = key.number;
    line.ring = 0;
    return line;
}

void refuse(std::string const& number, char const* what)
{
    log(kLogFailure, "lines", "{} is not set: {} is the party of a key, no line of this telephone", what, number);
}

}  // namespace

DssLine::DssLine(Lines& lines, KeyConfiguration const& key)
    : lines_(lines)
    , key_(key)
    , configuration_(configurationOf(key))
    , data_(configuration_, key.target)
{
    data_.setMonitorOnly(key.monitorOnly);
}

void DssLine::keyPressed()
{
    dssKeyPressed(eDSSContextNone, {}, {});
}

void DssLine::dssKeyPressed(EDSSContext context, std::string const& digits, std::string const& ringingLineURI)
{
    if (key_.monitorOnly) {
        log(kLogFailure, "lines", "key {} does nothing: it only shows {}", key_.number, number());
        return;
    }
    lines_.actions().stationPressed(digits.empty() ? number() : digits, context, ringingLineURI);
}

ELineState DssLine::getLineState()
{
    std::lock_guard const lock(lines_.calls());
    return state();
}

sfiResult DssLine::retrieve()
{
    std::lock_guard const lock(lines_.calls());
    return lines_.actions().takeOver(party_.status == PartyStatus::kHolding ? party_.dialog : std::nullopt, number());
}

std::string DssLine::getLastNotifyRemoteURI()
{
    std::lock_guard const lock(lines_.calls());
    return party_.remoteURI;
}

void DssLine::getServerFeaturesSettings(serverFeaturesSettings& settings)
{
    settings = {};
}

void DssLine::setDNDConfiguration(bool /*on*/)
{
    refuse(number(), "do-not-disturb");
}

void DssLine::setForwardingConfiguration(sfiForwardingType /*type*/, bool /*on*/, std::string const& /*destination*/,
                                         int /*ringCount*/)
{
    refuse(number(), "forwarding");
}

void DssLine::setMissedCallIndicated(bool /*indicated*/)
{
    refuse(number(), "the missed-call indication");
}

ELineState DssLine::state() const
{
    switch (party_.status) {
    case PartyStatus::kUnknown:
        return eLineStateUnknown;
    case PartyStatus::kIdle:
        return eLineStateIdle;
    case PartyStatus::kRinging:
        return eLineStateRingingElsewhere;
    case PartyStatus::kBusy:
        return eLineStateDSSBusy;
    case PartyStatus::kHolding:
        return eLineStateHoldElsewhere;
    }
    return eLineStateUnknown;
}

void DssLine::setParty(WatchedParty party)
{
    party_ = std::move(party);
    lines_.stationChanged(*this);
}

}  // namespace telephone
