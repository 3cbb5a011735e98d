#include "telephone/physical/KeyLamps.h"

#include <algorithm>
#include <array>
#include <mutex>

#include "telephone/lines/DssLine.h"
#include "telephone/lines/LineStates.h"
#include "telephone/lines/Lines.h"
#include "telephone/management/ForwardingKeys.h"

namespace telephone {

namespace {

using namespace PhysDefs;

struct LineLampRow
{
    ELineState state;
    Lamp lamp;
};

// clang-format off
constexpr std::array kLineLamps{
    LineLampRow{eLineStateUnknown,                 {lampOff,        lampNoColour}},
    LineLampRow{eLineStateIdle,                    {lampOff,        lampNoColour}},
    LineLampRow{eLineStateDialling,                {lampSteady,     lampGreen}},
    LineLampRow{eLineStateRemoteRinging,           {lampSteady,     lampGreen}},
    LineLampRow{eLineStateRinging,                 {lampFlashing,   lampGreen}},
    LineLampRow{eLineStateActive,                  {lampSteady,     lampGreen}},
    LineLampRow{eLineStateDSSBusy,                 {lampSteady,     lampRed}},
    LineLampRow{eLineStateHold,                    {lampFluttering, lampGreen}},
    LineLampRow{eLineStateHoldConsult,             {lampFluttering, lampGreen}},
    LineLampRow{eLineStateConference,              {lampSteady,     lampGreen}},
    LineLampRow{eLineStateHoldElsewhere,           {lampFluttering, lampRed}},
    LineLampRow{eLineStateActiveElsewhere,         {lampSteady,     lampRed}},
    LineLampRow{eLineStateConferenceHoldElsewhere, {lampFluttering, lampRed}},
    LineLampRow{eLineStateRingingElsewhere,        {lampFlashing,   lampRed}},
    LineLampRow{eLineStateOutOfService,            {lampOff,        lampNoColour}},
    LineLampRow{eLineStateSelected,                {lampSteady,     lampGreen}},
    LineLampRow{eLineStateReserved,                {lampSteady,     lampAmber}},
};
// clang-format on
static_assert(kLineLamps.size() == 17, "every line state has a lamp");

constexpr Lamp kOff{};
constexpr Lamp kOn{lampSteady, lampRed};

Lamp lampOfLine(ELineState state)
{
    auto const row = std::find_if(kLineLamps.begin(), kLineLamps.end(),
                                  [state](LineLampRow const& each) { return each.state == state; });
    return row == kLineLamps.end() ? kOff : row->lamp;
}

}  // namespace

KeyLamps::KeyLamps(PhysicalInterface& keys, Lines& lines, PhoneCalls& calls, Settings& settings)
    : keys_(keys)
    , lamps_(keys.lampBoard())
    , lines_(lines)
    , calls_(calls)
    , settings_(settings)
{}

KeyLamps::~KeyLamps()
{
    stop();
}

void KeyLamps::start()
{
    running_ = true;
    lines_.addListener(*this);
    listening_ = {
        settings_.listenToTag(SettingTags::kForwarding, [this](auto const&) { showForwarding(); }),
        settings_.listenToKey(SettingNames::kDoNotDisturb, [this](auto const&) { showDoNotDisturb(); }),
        settings_.listenToKey(SettingNames::kFeatureTogglePrefix, [this](auto const&) { showToggles(); }),
    };
    showForwarding();
    showDoNotDisturb();
    showToggles();
    showHeadset(keys_.getHeadsetJackStatus() == plugIn);
    std::lock_guard const lock(calls_);
    for (auto* line : lines_.lines()) {
        showLine(*line);
    }
}

void KeyLamps::stop()
{
    if (!running_) {
        return;
    }
    running_ = false;
    for (auto const id : listening_) {
        settings_.endListening(id);
    }
    lines_.removeListener(*this);
}

void KeyLamps::lineChanged(TelephoneLine& line, ELineState /*before*/)
{
    showLine(line.base());
}

void KeyLamps::stationChanged(DssLine& station)
{
    lamps_.setKey(station.key().number, lampOfLine(station.state()));
}

void KeyLamps::callChanged(CallSnapshot const& /*now*/, CallSnapshot const* /*before*/)
{
    showHeld();
}

void KeyLamps::messageWaitingChanged(int lineNumber, sfiMessageWaitingRecord const& record)
{
    if (record.messagesWaiting == sfiMessagesWaitingYes) {
        waiting_.insert(lineNumber);
    } else {
        waiting_.erase(lineNumber);
    }
    lamps_.setFunction(keyFunctionMessages, waiting_.empty() ? kOff : kOn);
}

void KeyLamps::microphoneMuteChanged(bool muted)
{
    lamps_.setFunction(keyFunctionMute, muted ? kOn : kOff);
}

void KeyLamps::showHeadset(bool plugged)
{
    lamps_.setFunction(keyFunctionHeadset, plugged ? Lamp{lampSteady, lampGreen} : kOff);
}

void KeyLamps::showTransfer(bool chosen)
{
    lamps_.setFunction(keyFunctionTransfer, chosen ? Lamp{lampSteady, lampGreen} : kOff);
}

void KeyLamps::showLine(TelephoneLine& line)
{
    auto const state = line.state();
    auto lamp = lampOfLine(state);
    if (state == eLineStateRinging && line.silenced()) {
        lamp.mode = lampSteady;
    }
    if (state == eLineStateIdle && line.missedCallIndicated()) {
        lamp = {lampFlashing, lampAmber};
    }
    for (auto const& key : keys_.layout().keys()) {
        bool const shows = key.function() == keyFunctionLine || key.function() == keyFunctionDirectStation;
        if (shows && key.configuration.target == line.id()) {
            lamps_.setKey(key.number(), lamp);
        }
    }
}

// Applications may set these two lamps as well, so they are set only when their reason changes.
void KeyLamps::showHeld()
{
    bool held = false;
    bool rings = false;
    bool active = false;
    for (auto const* line : lines_.lines()) {
        for (auto const& call : line->calls()) {
            auto const state = lineStateOf(call);
            held = held || isHeld(call);
            rings = rings || isRinging(call);
            active = active || state == eLineStateActive || state == eLineStateConference;
        }
    }
    if (held != held_) {
        held_ = held;
        static_cast<void>(lamps_.setNumbered(kLampHold, held ? Lamp{lampFlashing, lampGreen} : kOff));
    }
    if ((rings && active) != secondAlert_) {
        secondAlert_ = rings && active;
        static_cast<void>(lamps_.setNumbered(kLampSecondAlert, secondAlert_ ? Lamp{lampFlashing, lampAmber} : kOff));
    }
}

void KeyLamps::showForwarding()
{
    lamps_.setFunction(keyFunctionForwarding, isForwarding(settings_) ? Lamp{lampSteady, lampAmber} : kOff);
}

void KeyLamps::showDoNotDisturb()
{
    lamps_.setFunction(keyFunctionDoNotDisturb, settings_.flag(SettingNames::kDoNotDisturb) ? kOn : kOff);
}

void KeyLamps::showToggles()
{
    for (auto const& key : keys_.layout().keys()) {
        if (key.function() == keyFunctionFeatureToggle) {
            auto const name = std::string(SettingNames::kFeatureTogglePrefix) + std::to_string(key.number());
            lamps_.setKey(key.number(), settings_.flag(name) ? Lamp{lampSteady, lampGreen} : kOff);
        }
    }
}

}  // namespace telephone
