// The operations of CSfi on the whole telephone: settings, status, keys, timers.
#include <algorithm>
#include <chrono>
#include <mutex>
#include <vector>

#include "CommunicationsServiceEventIfc.h"
#include "platform/lines/LineData.h"
#include "platform/physical/AuditoryDeviceIfc.h"
#include "platform/physical/PhysDefs.h"
#include "telephone/framework/EventDispatcher.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/Refusals.h"
#include "telephone/framework/TimerService.h"
#include "telephone/lines/Lines.h"
#include "telephone/management/LocalManagement.h"
#include "telephone/sfi/LogComponent.h"
#include "telephone/sfi/SettingsCallPolicy.h"
#include "telephone/sfi/Sfi.h"
#include "telephone/sfi/SfiResults.h"

namespace telephone {

namespace {

constexpr std::chrono::seconds kStoreRetry{30};

}  // namespace

sfiResult Sfi::SetMicrophoneMute(bool mute)
{
    engine_.list().setMicrophoneMute(mute);
    return sfiSuccess;
}

sfiResult Sfi::GetMicrophoneMute(bool& mute)
{
    mute = engine_.list().microphoneMute();
    return sfiSuccess;
}

void Sfi::SetAssociatedCalls(bool associated)
{
    engine_.incoming().setAssociatedCalls(associated);
}

// The name of a line in events; the first line stands for the whole telephone.
std::string Sfi::deviceOf(int lineID) const
{
    if (TelephoneLine const* const line = lines_.byNumber(lineID)) {
        return line->id();
    }
    return lines_.lines().empty() ? std::string() : lines_.lines().front()->id();
}

sfiResult Sfi::SetDoNotDisturb(int lineID, bool on)
{
    policy_.setDoNotDisturb(lineID, on);
    events_.post(
        [device = deviceOf(lineID), on](CommunicationsServiceEventIfc& event) { event.doNotDisturbSet(device, on); });
    if (!on && settings_.flag(SettingNames::kDoNotDisturb)) {
        // The service may hold locks here that the listeners of the setting take.
        endDoNotDisturbSetting(std::chrono::milliseconds(0));
    }
    return sfiSuccess;
}

void Sfi::endDoNotDisturbSetting(std::chrono::milliseconds after)
{
    timers_.start(after, [this] {
        if (policy_.doNotDisturb(0) || !settings_.flag(SettingNames::kDoNotDisturb)) {
            return;
        }
        auto const stored = settings_.set(SettingNames::kDoNotDisturb, "false");
        reportIfRefused(kComponent, stored);
        if (!stored) {
            endDoNotDisturbSetting(kStoreRetry);
        }
    });
}

sfiResult Sfi::GetDoNotDisturb(int lineID, bool& on)
{
    std::lock_guard const guard(engine_);
    on = policy_.doNotDisturb(lineID);
    return sfiSuccess;
}

void Sfi::GetDNDEnabled(bool& enabled)
{
    enabled = settings_.flag(SettingNames::kDoNotDisturbEnabled);
}

void Sfi::GetAgentFeatureEnabled(bool& enabled)
{
    enabled = settings_.flag(SettingNames::kAgentFeatureEnabled);
}

sfiResult Sfi::SetAgentState(int lineID, std::string const& state)
{
    std::string const device = deviceOf(lineID);
    engine_.server().tellAgentState(device, state);
    events_.post([device, state](CommunicationsServiceEventIfc& event) { event.agentStateSet(device, state); });
    return sfiSuccess;
}

void Sfi::SystemStatus(std::string const& status, std::string const& statusInfo, int)
{
    events_.post(
        [status, statusInfo](CommunicationsServiceEventIfc& event) { event.systemStatusChange(status, statusInfo); });
}

bool Sfi::IsPhoneLocked()
{
    return settings_.flag(SettingNames::kPhoneLocked);
}

int Sfi::GetDialRestrictionMode()
{
    return settings_.number(SettingNames::kDialRestriction);
}

int Sfi::GetLineHeadsetOverride()
{
    return settings_.number(SettingNames::kHeadsetOverride);
}

void Sfi::SendFeatureFailureNotification(int lineID, int feature, int failure)
{
    engine_.featureFailed(lineID, static_cast<sfiFeature>(feature), static_cast<sfiFeatureFailure>(failure));
}

void Sfi::SetHeadsetPlugged(bool plugged)
{
    if (AuditoryDeviceIfc* const device = auditoryDevice_) {
        device->useHeadset(plugged);
    }
}

void Sfi::HandleKeyFunction(int keyFunction)
{
    resultOf(keyFunction == PhysDefs::keyFunctionHold
                 ? pressHoldKey()
                 : refuse(RefusalKind::kNotSupported,
                          fmt::format("key function {} does nothing in the call control", keyFunction)));
}

// Holds the active call; without one, retrieves the call held last.
Outcome<> Sfi::pressHoldKey()
{
    std::lock_guard const guard(engine_);
    if (auto const active = engine_.activeCall()) {
        return engine_.hold(active->callID);
    }
    if (auto const held = engine_.established().lastHeldCall()) {
        return engine_.retrieve(held->callID);
    }
    return refuse(RefusalKind::kWrongState, "there is no call to hold or to retrieve");
}

void Sfi::JackEvent()
{
    log(kLogInfo, kComponent, "a jack was plugged or unplugged");
}

void Sfi::NotifyFPKAvailable()
{
    log(kLogInfo, kComponent, "the programmable keys are available");
}

int Sfi::StartTimer(int milliseconds)
{
    return timers_.start(std::chrono::milliseconds(std::max(milliseconds, 0)));
}

int Sfi::ApplyManageableData(ManageableData& data, bool changed)
{
    if (changed) {
        return 1;
    }
    if (reportIfRefused(kComponent, settings_.setAll(itemsOf(data)))) {
        return 0;
    }
    // The service tells of the changes that it makes itself; this one comes from the management.
    if (bool const on = settings_.flag(SettingNames::kDoNotDisturb); on != policy_.doNotDisturb(0)) {
        SetDoNotDisturb(0, on);
    }
    return 1;
}

int Sfi::GetHotWarmLineStatus(int lineID)
{
    TelephoneLine* const line = lines_.find(deviceOf(lineID));
    return line != nullptr ? line->getLineData()->getHotWarmType() : LineData::kHotWarmNone;
}

sfiResult Sfi::GetMessageWaitingIndicator(std::string const& phoneNumber, sfiMessageWaitingRecord& record)
{
    auto const known = engine_.messages().of(phoneNumber);
    if (!known) {
        return sfiFailure;
    }
    record = *known;
    return sfiSuccess;
}

// This telephone has no Bluetooth device.
void Sfi::GetBluetoothLineURI(int, std::string& lineURI, std::string& name)
{
    lineURI.clear();
    name.clear();
}

}  // namespace telephone
