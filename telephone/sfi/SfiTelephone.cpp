// The operations of CSfi that concern the telephone as a whole: settings, status, keys, timers.
#include <algorithm>
#include <mutex>
#include <vector>

#include "CommunicationsServiceEventIfc.h"
#include "platform/lines/Line.h"
#include "platform/lines/LineData.h"
#include "platform/lines/LineManager.h"
#include "platform/physical/AuditoryDeviceIfc.h"
#include "platform/physical/PhysDefs.h"
#include "telephone/framework/EventDispatcher.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/TimerService.h"
#include "telephone/management/Settings.h"
#include "telephone/sfi/SettingsCallPolicy.h"
#include "telephone/sfi/Sfi.h"

namespace telephone {

namespace {
constexpr char const* kComponent = "sfi";
}

sfiResult Sfi::SetMicrophoneMute(bool mute)
{
    engine_.setMicrophoneMute(mute);
    return sfiSuccess;
}

sfiResult Sfi::GetMicrophoneMute(bool& mute)
{
    mute = engine_.microphoneMute();
    return sfiSuccess;
}

void Sfi::SetAssociatedCalls(bool associated)
{
    engine_.setAssociatedCalls(associated);
}

// What events call a line; of the whole telephone: its first line.
std::string Sfi::deviceOf(int lineID) const
{
    std::lock_guard const guard(engine_);
    if (auto const line = lines_.addressOf(lineID, 0)) {
        return line->lineURI;
    }
    std::vector<LineAccount> const accounts = lines_.accounts();
    return accounts.empty() ? std::string() : accounts.front().lineURI;
}

sfiResult Sfi::SetDoNotDisturb(int lineID, bool on)
{
    policy_.setDoNotDisturb(lineID, on);
    events_.post(
        [device = deviceOf(lineID), on](CommunicationsServiceEventIfc& event) { event.doNotDisturbSet(device, on); });
    return sfiSuccess;
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
    engine_.tellAgentState(device, state);
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
    if (keyFunction == PhysDefs::keyFunctionHold) {
        pressHoldKey();
    } else {
        log(kLogWarning, kComponent, "key function {} does nothing in the call control", keyFunction);
    }
}

// Holds the call that speaks; without one it takes back the one that was held last.
void Sfi::pressHoldKey()
{
    std::lock_guard const guard(engine_);
    if (auto const active = engine_.activeCall()) {
        engine_.setHeldByHand(active->callID, true);
        engine_.hold(active->callID);
        return;
    }
    if (auto const held = engine_.lastHeldCall()) {
        engine_.retrieve(held->callID);
    } else {
        log(kLogWarning, kComponent, "hold key: there is no call to hold or to retrieve");
    }
}

void Sfi::JackEvent()
{
    log(kLogInfo, kComponent, "the plug of the line was moved");
}

void Sfi::NotifyViewState(int view)
{
    viewState_ = view;
}

void Sfi::NotifyFPKAvailable()
{
    log(kLogInfo, kComponent, "the programmable keys can be used");
}

int Sfi::StartTimer(int milliseconds)
{
    return timers_.start(std::chrono::milliseconds(std::max(milliseconds, 0)));
}

// The call control's own timers are not numbered, so that none of these is its own.
void Sfi::TimerExpired(int) {}

void Sfi::SetPhysicalInterface(PhysicalInterfaceServiceIfc* physicalInterface)
{
    physicalInterface_ = physicalInterface;
}

void Sfi::SetAuditoryDevice(AuditoryDeviceIfc* auditoryDevice)
{
    auditoryDevice_ = auditoryDevice;
}

int Sfi::ApplyManageableData(ManageableData& data, bool changed)
{
    return settings_.apply(data, changed);
}

int Sfi::GetHotWarmLineStatus(int lineID)
{
    LineManager* const lines = LineManager::Instance();
    Line* const line = lines != nullptr ? lines->getLine(deviceOf(lineID)) : nullptr;
    LineData* const data = line != nullptr ? line->getLineData() : nullptr;
    return data != nullptr ? data->getHotWarmType() : LineData::kHotWarmNone;
}

sfiResult Sfi::GetMessageWaitingIndicator(std::string const& phoneNumber, sfiMessageWaitingRecord& record)
{
    auto const known = engine_.messageWaiting(phoneNumber);
    if (!known) {
        return sfiFailure;
    }
    record = *known;
    return sfiSuccess;
}

// There is no Bluetooth device: its calls have no line.
void Sfi::GetBluetoothLineURI(int, std::string& lineURI, std::string& name)
{
    lineURI.clear();
    name.clear();
}

void Sfi::setCFChangesPending(bool pending)
{
    forwardingChangesPending_ = pending;
}

}  // namespace telephone
