#include "telephone/physical/KeyApplication.h"

#include <algorithm>
#include <mutex>

#include "CommunicationsServiceIfc.h"
#include "TeamServiceIfc.h"
#include "telephone/framework/Log.h"
#include "telephone/lines/DssLine.h"
#include "telephone/lines/LineStates.h"
#include "telephone/lines/Lines.h"
#include "telephone/management/Settings.h"
#include "telephone/physical/KeyLamps.h"

namespace telephone {

namespace {

constexpr char const* kComponent = "keys";

bool dials(PhoneKey const& key)
{
    return key.function() == PhysDefs::keyFunctionDirectStation || key.function() == PhysDefs::keyFunctionBusyLampField;
}

bool isCurrent(CallSnapshot const& call)
{
    switch (lineStateOf(call)) {
    case eLineStateDialling:
    case eLineStateRemoteRinging:
    case eLineStateActive:
    case eLineStateConference:
        return true;
    default:
        return false;
    }
}

bool isAlerting(CallSnapshot const& call)
{
    return lineStateOf(call) == eLineStateRinging;
}

template <typename Predicate>
std::optional<CallSnapshot> firstCall(PhoneCalls const& calls, Predicate matches)
{
    auto const all = calls.calls();
    auto const found = std::find_if(all.begin(), all.end(), matches);
    return found == all.end() ? std::nullopt : std::optional(*found);
}

}  // namespace

struct KeyApplication::Row
{
    PhysDefs::keyFunctionType function;
    void (KeyApplication::*handle)(PhoneKey const&);
};

// Presses of the functions that are missing here go to observers (see PhysicalInterface).
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

KeyApplication::KeyApplication(PhysicalInterface& keys, KeyLamps& lamps, Lines& lines, Settings& settings)
    : keys_(keys)
    , lamps_(lamps)
    , lines_(lines)
    , settings_(settings)
{
    keys_.setKeyHandler(this);
}

KeyApplication::~KeyApplication()
{
    keys_.setKeyHandler(nullptr);
}

void KeyApplication::setService(Executable* service)
{
    service_.open(service);
}

void KeyApplication::keyPressed(PhoneKey const& key)
{
    auto const* const row = std::find_if(std::begin(kRows), std::end(kRows),
                                         [&key](Row const& each) { return each.function == key.function(); });
    if (row == std::end(kRows)) {
        return;
    }
    if (!mayAct(key)) {
        log(kLogInfo, kComponent, "key {} does nothing: the phone is locked", key.number());
        return;
    }
    (this->*row->handle)(key);
}

bool KeyApplication::mayAct(PhoneKey const& key) const
{
    return !settings_.flag(SettingNames::kPhoneLocked) || (dials(key) && lines_.mayDial(key.configuration.target));
}

void KeyApplication::linePressed(PhoneKey const& key)
{
    if (auto* const team = service_.team()) {
        team->lineKeyPressedFPK(key.number());
    }
}

void KeyApplication::stationPressed(PhoneKey const& key)
{
    std::string ringingLineURI;
    auto const context = contextFor(key, ringingLineURI);
    if (auto* const team = service_.team()) {
        team->dssKeyPressedFPK(key.number(), context, {}, ringingLineURI);
    }
}

void KeyApplication::busyLampPressed(PhoneKey const& key)
{
    if (auto* const team = service_.team()) {
        team->blfKeyPressedFPK(key.number(), takeTransferMode());
    }
}

void KeyApplication::togglePressed(PhoneKey const& key)
{
    if (auto* const team = service_.team()) {
        team->ftToggleKeyPressed(key.number());
    }
}

void KeyApplication::mutePressed(PhoneKey const& /*key*/)
{
    auto* const calls = service_.calls();
    if (calls == nullptr) {
        return;
    }
    bool muted = false;
    calls->getMicrophoneMute(muted);
    if (calls->setMicrophoneMute(!muted) != sfiSuccess) {
        log(kLogFailure, kComponent, "the microphone stays {}: the service refuses", muted ? "mute" : "open");
    }
}

// The headset has no hook switch: its key is one.
void KeyApplication::headsetPressed(PhoneKey const& key)
{
    if (keys_.getHeadsetJackStatus() != PhysDefs::plugIn) {
        log(kLogFailure, kComponent, "key {} does nothing: no headset is plugged in", key.number());
        return;
    }
    bool inUse = false;
    {
        std::lock_guard const lock(lines_.calls());
        inUse = lines_.selected() != nullptr || (currentCall() && !alertingCall());
    }
    if (inUse) {
        goOnHook();
    } else {
        goOffHook();
    }
}

void KeyApplication::releasePressed(PhoneKey const& /*key*/)
{
    goOnHook();
}

// Pressed again it takes the choice back.
void KeyApplication::transferPressed(PhoneKey const& /*key*/)
{
    setTransferMode(!transferMode_);
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
    if (up) {
        goOffHook();
    } else {
        goOnHook();
    }
}

void KeyApplication::plugChanged(PhysDefs::plugIdentifier plug, bool in)
{
    if (plug == PhysDefs::plugHeadset) {
        lamps_.showHeadset(in);
    }
}

void KeyApplication::goOffHook()
{
    std::optional<CallSnapshot> alerting;
    std::string idleLine;
    {
        std::lock_guard const lock(lines_.calls());
        alerting = alertingCall();
        if (!alerting && !currentCall() && lines_.selected() == nullptr) {
            auto* const line = lines_.lineForNewCall();
            idleLine = line == nullptr ? std::string() : line->base().id();
        }
    }
    if (alerting) {
        if (auto* const calls = service_.calls()) {
            calls->answerCall(alerting->line.lineURI, alerting->callID);
        }
    } else if (!idleLine.empty()) {
        if (auto* const team = service_.team()) {
            team->lineKeyPressed(idleLine);
        }
    }
}

void KeyApplication::goOnHook()
{
    std::optional<CallSnapshot> current;
    {
        std::lock_guard const lock(lines_.calls());
        current = currentCall();
        if (auto* const selected = lines_.selected()) {
            lines_.release(*selected);
        }
    }
    auto* const calls = current ? service_.calls() : nullptr;
    if (calls != nullptr) {
        calls->callClear(current->line.lineURI, current->callID, CSTAEventCauseNormalClearing);
    }
}

std::optional<CallSnapshot> KeyApplication::alertingCall() const
{
    return firstCall(lines_.calls(), isAlerting);
}

std::optional<CallSnapshot> KeyApplication::currentCall() const
{
    return firstCall(lines_.calls(), isCurrent);
}

// A call that rings here is deflected to the party; a chosen transfer comes next; a call that rings there is picked up;
// in a call the party is consulted; otherwise it is called.
EDSSContext KeyApplication::contextFor(PhoneKey const& key, std::string& ringingLineURI)
{
    std::lock_guard const lock(lines_.calls());
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
    return lines_.calls().activeCall() ? eDSSContextConsultation : eDSSContextNone;
}

}  // namespace telephone
