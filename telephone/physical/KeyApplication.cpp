#include "telephone/physical/KeyApplication.h"

#include <algorithm>
#include <mutex>

#include <spdlog/fmt/fmt.h>

#include "CommunicationsServiceIfc.h"
#include "TeamServiceIfc.h"
#include "telephone/framework/Refusals.h"
#include "telephone/lines/DssLine.h"
#include "telephone/lines/LineStates.h"
#include "telephone/lines/Lines.h"
#include "telephone/management/Settings.h"
#include "telephone/physical/KeyLamps.h"
#include "telephone/physical/LogComponent.h"

namespace telephone {

namespace {

bool dials(PhoneKey const& key)
{
    return key.function() == PhysDefs::keyFunctionDirectStation || key.function() == PhysDefs::keyFunctionBusyLampField;
}

bool isCurrent(CallSnapshot const& call)
{
    auto const state = lineStateOf(call);
    return state == eLineStateDialling || state == eLineStateRemoteRinging || state == eLineStateActive ||
           state == eLineStateConference;
}

}  // namespace

struct KeyApplication::Row
{
    PhysDefs::keyFunctionType function;
    Outcome<> (KeyApplication::*handle)(PhoneKey const&);
};

// Applications subscribe to the other key functions (see PhysicalInterface).
KeyApplication::Row const KeyApplication::kRows[] = {
    {PhysDefs::keyFunctionLine, &KeyApplication::linePressed},
    {PhysDefs::keyFunctionDirectStation, &KeyApplication::stationPressed},
    {PhysDefs::keyFunctionBusyLampField, &KeyApplication::busyLampPressed},
    {PhysDefs::keyFunctionFeatureToggle, &KeyApplication::togglePressed},
    {PhysDefs::keyFunctionMute, &KeyApplication::mutePressed},
    {PhysDefs::keyFunctionHeadset, &KeyApplication::headsetPressed},
    {PhysDefs::keyFunctionRelease, &KeyApplication::releasePressed},
    {PhysDefs::keyFunctionTransfer, &KeyApplication::transferPressed},
};

KeyApplication::KeyApplication(PhysicalInterface& keys, KeyLamps& lamps, Lines& lines, PhoneCalls& calls,
                               Settings& settings)
    : keys_(keys)
    , lamps_(lamps)
    , lines_(lines)
    , calls_(calls)
    , settings_(settings)
{
    keys_.setKeyHandler(this);
}

KeyApplication::~KeyApplication()
{
    keys_.setKeyHandler(nullptr);
}

void KeyApplication::keyPressed(PhoneKey const& key)
{
    auto const* const row = std::find_if(std::begin(kRows), std::end(kRows),
                                         [&key](Row const& each) { return each.function == key.function(); });
    if (row == std::end(kRows)) {
        return;
    }
    if (!mayAct(key)) {
        reportRefusal(kComponent, {RefusalKind::kNotPermitted,
                                   fmt::format("key {} does nothing while the phone is locked", key.number())});
        return;
    }
    reportIfRefused(kComponent, (this->*row->handle)(key));
}

bool KeyApplication::mayAct(PhoneKey const& key) const
{
    return !settings_.flag(SettingNames::kPhoneLocked) || (dials(key) && lines_.mayDial(key.configuration.target));
}

Outcome<> KeyApplication::linePressed(PhoneKey const& key)
{
    return service_.team().map([&key](TeamServiceIfc* team) { team->lineKeyPressedFPK(key.number()); });
}

Outcome<> KeyApplication::stationPressed(PhoneKey const& key)
{
    std::string ringingLineURI;
    auto const context = contextFor(key, ringingLineURI);
    return service_.team().map(
        [&](TeamServiceIfc* team) { team->dssKeyPressedFPK(key.number(), context, {}, ringingLineURI); });
}

Outcome<> KeyApplication::busyLampPressed(PhoneKey const& key)
{
    return service_.team().map([&](TeamServiceIfc* team) { team->blfKeyPressedFPK(key.number(), takeTransferMode()); });
}

Outcome<> KeyApplication::togglePressed(PhoneKey const& key)
{
    return service_.team().map([&key](TeamServiceIfc* team) { team->ftToggleKeyPressed(key.number()); });
}

Outcome<> KeyApplication::mutePressed(PhoneKey const& /*key*/)
{
    return service_.calls().and_then([](CommunicationsServiceIfc* calls) -> Outcome<> {
        bool muted = false;
        calls->getMicrophoneMute(muted);
        if (calls->setMicrophoneMute(!muted) != sfiSuccess) {
            return refuse(RefusalKind::kUnavailable,
                          fmt::format("the service refused to switch the microphone {}", muted ? "on" : "off"));
        }
        return {};
    });
}

// A headset has no hook switch; its key serves as one.
Outcome<> KeyApplication::headsetPressed(PhoneKey const& key)
{
    if (keys_.getHeadsetJackStatus() != PhysDefs::plugIn) {
        return refuse(RefusalKind::kWrongState,
                      fmt::format("key {} does nothing while no headset is plugged in", key.number()));
    }
    bool inUse = false;
    {
        std::lock_guard const lock(calls_);
        inUse = lines_.selected() != nullptr || (currentCall() && !alertingCall());
    }
    return inUse ? goOnHook() : goOffHook();
}

Outcome<> KeyApplication::releasePressed(PhoneKey const& /*key*/)
{
    return goOnHook();
}

// A second press cancels the first.
Outcome<> KeyApplication::transferPressed(PhoneKey const& /*key*/)
{
    setTransferMode(!transferMode_);
    return {};
}

void KeyApplication::setTransferMode(bool on)
{
    transferMode_ = on;
    lamps_.showTransfer(on);
}

bool KeyApplication::takeTransferMode()
{
    bool const chosen = transferMode_;
    setTransferMode(false);
    return chosen;
}

void KeyApplication::hookChanged(bool up)
{
    reportIfRefused(kComponent, up ? goOffHook() : goOnHook());
}

void KeyApplication::plugChanged(PhysDefs::plugIdentifier plug, bool in)
{
    if (plug == PhysDefs::plugHeadset) {
        lamps_.showHeadset(in);
    }
}

Outcome<> KeyApplication::goOffHook()
{
    std::optional<CallSnapshot> alerting;
    std::string idleLine;
    {
        std::lock_guard const lock(calls_);
        alerting = alertingCall();
        if (!alerting) {
            if (currentCall() || lines_.selected() != nullptr) {
                return {};
            }
            auto const place = lines_.lineForNewCall();
            if (!place) {
                return tl::unexpected(place.error());
            }
            idleLine = (*place)->base().id();
        }
    }
    if (alerting) {
        return service_.calls().map(
            [&](CommunicationsServiceIfc* calls) { calls->answerCall(alerting->line.lineURI, alerting->callID); });
    }
    return service_.team().map([&](TeamServiceIfc* team) { team->lineKeyPressed(idleLine); });
}

Outcome<> KeyApplication::goOnHook()
{
    std::optional<CallSnapshot> current;
    {
        std::lock_guard const lock(calls_);
        current = currentCall();
        if (auto* const selected = lines_.selected()) {
            lines_.release(*selected);
        }
    }
    if (!current) {
        return {};
    }
    return service_.calls().map([&](CommunicationsServiceIfc* calls) {
        calls->callClear(current->line.lineURI, current->callID, CSTAEventCauseNormalClearing);
    });
}

std::optional<CallSnapshot> KeyApplication::alertingCall() const
{
    return firstCall(calls_.calls(), [this](CallSnapshot const& call) {
        auto const* const line = lines_.byNumber(call.line.recordLine);
        return isRinging(call) && !(line != nullptr && line->alertsOnKeysetOnly(call.callID));
    });
}

std::optional<CallSnapshot> KeyApplication::currentCall() const
{
    return firstCall(calls_.calls(), isCurrent);
}

// A call that is ringing here is deflected to the party. Otherwise, in this order: a transfer that was chosen, picking
// up a call that is ringing at the party, consulting the party during a call, calling it.
EDSSContext KeyApplication::contextFor(PhoneKey const& key, std::string& ringingLineURI)
{
    std::lock_guard const lock(calls_);
    if (auto const ringing = alertingCall()) {
        ringingLineURI = ringing->line.lineURI;
        return eDSSContextDeflect;
    }
    if (takeTransferMode()) {
        return eDSSContextBlindTransfer;
    }
    auto* const station = dynamic_cast<DssLine*>(lines_.getDSSLineForFPK(key.number()));
    if (station != nullptr && station->party().status == PartyStatus::kRinging) {
        return eDSSContextPickup;
    }
    return calls_.activeCall() ? eDSSContextConsultation : eDSSContextNone;
}

}  // namespace telephone
