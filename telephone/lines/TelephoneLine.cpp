#include "telephone/lines/TelephoneLine.h"

#include <algorithm>
#include <mutex>

#include <spdlog/fmt/fmt.h>

#include "telephone/framework/Refusals.h"
#include "telephone/lines/LineActions.h"
#include "telephone/lines/LineNotifier.h"
#include "telephone/lines/LineStates.h"
#include "telephone/lines/LogComponent.h"

namespace telephone {

namespace {

ELineState elsewhereStateOf(PartyStatus status)
{
    switch (status) {
    case PartyStatus::kUnknown:
    case PartyStatus::kIdle:
        return eLineStateIdle;
    case PartyStatus::kRinging:
        return eLineStateRingingElsewhere;
    case PartyStatus::kBusy:
        return eLineStateActiveElsewhere;
    case PartyStatus::kHolding:
        return eLineStateHoldElsewhere;
    }
    return eLineStateIdle;
}

}  // namespace

TelephoneLine::TelephoneLine(LineTable::Row const& row, TelephoneLine* base, Parts const& parts)
    : configuration_(row.configuration)
    , place_(row.address)
    , parts_(parts)
    , data_(configuration_, place_.lineURI)
    , base_(base)
    , inService_(!configuration_.registers)
{
    if (base_ != nullptr) {
        base_->appearances_.push_back(this);
    }
}

void TelephoneLine::keyPressed()
{
    reportIfRefused(kComponent, parts_.actions.linePressed(*this));
}

void TelephoneLine::dssKeyPressed(EDSSContext context, std::string const& digits, std::string const& ringingLineURI)
{
    if (data_.getDSSMonitorOnly()) {
        reportRefusal(kComponent, {RefusalKind::kNotPermitted, fmt::format("the key only shows line {}", id())});
        return;
    }
    auto const& number = digits.empty() ? userOfLine(configuration_) : digits;
    reportIfRefused(kComponent, parts_.actions.stationPressed(number, context, ringingLineURI));
}

ELineState TelephoneLine::getLineState()
{
    std::lock_guard const lock(parts_.calls);
    return state();
}

sfiResult TelephoneLine::retrieve()
{
    std::lock_guard const lock(parts_.calls);
    if (elsewhere_.state != eLineStateHoldElsewhere && elsewhere_.state != eLineStateConferenceHoldElsewhere) {
        reportRefusal(kComponent,
                      {RefusalKind::kWrongState, fmt::format("no other telephone holds a call on line {}", id())});
        return sfiFailure;
    }
    return reportIfRefused(kComponent, parts_.actions.takeBack(*this)) ? sfiFailure : sfiSuccess;
}

std::string TelephoneLine::getLastNotifyRemoteURI()
{
    std::lock_guard const lock(parts_.calls);
    return remoteURI_;
}

int TelephoneLine::getChildBCALineIdReservedForConsultationCall()
{
    std::lock_guard const lock(parts_.calls);
    auto const& places = base().appearances_;
    auto const reserved = std::find_if(places.begin(), places.end(), [](TelephoneLine const* appearance) {
        return appearance->seizure_ == eLineStateReserved;
    });
    return reserved == places.end() ? 0 : (*reserved)->place_.recordLine;
}

void TelephoneLine::getServerFeaturesSettings(serverFeaturesSettings& settings)
{
    settings = serverFeatures().read();
}

void TelephoneLine::setDNDConfiguration(bool on)
{
    reportIfRefused(kComponent, serverFeatures().setDoNotDisturb(on));
}

void TelephoneLine::setForwardingConfiguration(sfiForwardingType type, bool on, std::string const& destination,
                                               int ringCount)
{
    reportIfRefused(kComponent, serverFeatures().setForwarding(type, {on, destination, ringCount}));
}

void TelephoneLine::setMissedCallIndicated(bool indicated)
{
    std::lock_guard const lock(parts_.calls);
    missedCall_ = indicated;
    parts_.notifier.lineChanged(*this, state());
}

Outcome<> TelephoneLine::bridge()
{
    std::lock_guard const lock(parts_.calls);
    if (configuration_.sharedLineType != LineData::kBridgedLine) {
        return refuse(RefusalKind::kNotSupported, fmt::format("line {} is not bridged", id()));
    }
    if (elsewhere_.state != eLineStateActiveElsewhere) {
        return refuse(RefusalKind::kWrongState, fmt::format("no other telephone has an active call on line {}", id()));
    }
    return parts_.actions.join(*this);
}

ELineState TelephoneLine::state() const
{
    auto shown = appearances_.empty() ? ownState() : appearances_.front()->state();
    for (auto const* appearance : appearances_) {
        shown = morePressing(shown, appearance->state());
    }
    return elsewhere_.state == eLineStateIdle ? shown : morePressing(shown, elsewhere_.state);
}

ELineState TelephoneLine::ownState() const
{
    auto shown = inService_ ? morePressing(eLineStateIdle, seizure_) : eLineStateOutOfService;
    for (auto const& call : calls_) {
        auto const ofCall = lineStateOf(call);
        shown = ofCall == eLineStateIdle ? shown : morePressing(shown, ofCall);
    }
    return shown;
}

std::optional<CallSnapshot> TelephoneLine::callInState(ELineState state) const
{
    return firstCall(calls_, [state](CallSnapshot const& each) { return lineStateOf(each) == state; });
}

// A seized place comes first, so that a reservation serves the call for which it was made.
TelephoneLine* TelephoneLine::freePlace()
{
    if (appearances_.empty()) {
        return calls_.empty() ? this : nullptr;
    }
    TelephoneLine* free = nullptr;
    for (auto* appearance : appearances_) {
        if (!appearance->calls_.empty() || appearance->elsewhere_.state != eLineStateIdle) {
            continue;
        }
        if (appearance->seizure_ != eLineStateIdle) {
            return appearance;
        }
        free = free == nullptr ? appearance : free;
    }
    return free;
}

bool TelephoneLine::isAudible() const
{
    return !silenced_ && std::any_of(calls_.begin(), calls_.end(), [this](CallSnapshot const& call) {
        return isRinging(call) && !alertsOnKeysetOnly(call.callID);
    });
}

void TelephoneLine::callChanged(CallSnapshot const& now, bool isNew)
{
    change([&] {
        noteCall(now, isNew);
        if (base_ != nullptr) {
            base_->noteCall(now, isNew);
        }
    });
}

void TelephoneLine::noteCall(CallSnapshot const& now, bool isNew)
{
    if (isNew && !now.incoming) {
        seizure_ = eLineStateIdle;
    }
    if (!now.remoteURI.empty()) {
        remoteURI_ = now.remoteURI;
    }
    auto const known = std::find_if(calls_.begin(), calls_.end(),
                                    [&now](CallSnapshot const& each) { return each.callID == now.callID; });
    if (known == calls_.end() && !now.ended()) {
        calls_.push_back(now);
    } else if (known != calls_.end() && now.ended()) {
        calls_.erase(known);
    } else if (known != calls_.end()) {
        *known = now;
    }
    if (!now.alerting()) {
        keysetOnly_.erase(now.callID);
    }
    silenced_ = silenced_ && callInState(eLineStateRinging);
}

void TelephoneLine::setInService(bool inService)
{
    for (auto* appearance : appearances_) {
        appearance->setInService(inService);
    }
    change([&] { inService_ = inService; });
}

void TelephoneLine::setSeizure(ELineState seizure)
{
    change([&] { seizure_ = seizure; });
}

void TelephoneLine::setParty(WatchedParty const& party)
{
    bool const areNamed = !appearances_.empty() && !party.appearances.empty();
    for (std::size_t i = 0; i < appearances_.size(); ++i) {
        appearances_[i]->showElsewhere(i < party.appearances.size() ? party.appearances[i] : WatchedParty());
    }
    showElsewhere(areNamed ? WatchedParty() : party);
}

void TelephoneLine::showElsewhere(WatchedParty const& party)
{
    change([&] {
        elsewhere_ = calls_.empty() ? ElsewhereCall{elsewhereStateOf(party.status), party.remoteURI, party.dialog,
                                                    party.join, party.isPrivate}
                                    : ElsewhereCall{};
        if (!elsewhere_.remoteURI.empty()) {
            remoteURI_ = elsewhere_.remoteURI;
        }
    });
}

Outcome<> TelephoneLine::silence()
{
    if (state() != eLineStateRinging) {
        return refuse(RefusalKind::kWrongState, fmt::format("no call is ringing on line {}", id()));
    }
    change([this] { silenced_ = base().silenced_ = true; });
    return {};
}

void TelephoneLine::alertOnKeysetOnly(int callID)
{
    change([&] {
        keysetOnly_.insert(callID);
        base().keysetOnly_.insert(callID);
    });
}

void TelephoneLine::change(std::function<void()> const& makeChange)
{
    auto const before = state();
    auto const baseBefore = base().state();
    makeChange();
    if (base_ != nullptr) {
        parts_.notifier.lineChanged(*base_, baseBefore);
    }
    parts_.notifier.lineChanged(*this, before);
}

}  // namespace telephone
