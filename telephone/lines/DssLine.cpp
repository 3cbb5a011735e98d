#include "telephone/lines/DssLine.h"

#include <mutex>
#include <utility>

#include <spdlog/fmt/fmt.h>

#include "telephone/calls/PhoneCalls.h"
#include "telephone/framework/Refusals.h"
#include "telephone/lines/LineActions.h"
#include "telephone/lines/LineNotifier.h"
#include "telephone/lines/LogComponent.h"

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

}  // namespace

DssLine::DssLine(KeyConfiguration const& key, PhoneCalls& calls, LineActions& actions, LineNotifier& notifier)
    : key_(key)
    , calls_(calls)
    , actions_(actions)
    , notifier_(notifier)
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
        reportRefusal(kComponent,
                      {RefusalKind::kNotPermitted, fmt::format("key {} only shows {}", key_.number, number())});
        return;
    }
    reportIfRefused(kComponent, actions_.stationPressed(digits.empty() ? number() : digits, context, ringingLineURI));
}

ELineState DssLine::getLineState()
{
    std::lock_guard const lock(calls_);
    return state();
}

sfiResult DssLine::retrieve()
{
    std::lock_guard const lock(calls_);
    auto const dialog = party_.status == PartyStatus::kHolding ? party_.dialog : std::nullopt;
    return reportIfRefused(kComponent, actions_.takeOver(dialog, number())) ? sfiFailure : sfiSuccess;
}

std::string DssLine::getLastNotifyRemoteURI()
{
    std::lock_guard const lock(calls_);
    return party_.remoteURI;
}

void DssLine::getServerFeaturesSettings(serverFeaturesSettings& settings)
{
    settings = {};
}

void DssLine::setDNDConfiguration(bool /*on*/)
{
    reportNoFeature("do-not-disturb");
}

void DssLine::setForwardingConfiguration(sfiForwardingType /*type*/, bool /*on*/, std::string const& /*destination*/,
                                         int /*ringCount*/)
{
    reportNoFeature("forwarding");
}

void DssLine::setMissedCallIndicated(bool /*indicated*/)
{
    reportNoFeature("the missed-call indication");
}

void DssLine::reportNoFeature(char const* feature) const
{
    reportRefusal(kComponent,
                  {RefusalKind::kNotSupported,
                   fmt::format("{} cannot be set for {}, which is not a line of this telephone", feature, number())});
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
    notifier_.stationChanged(*this);
}

}  // namespace telephone
