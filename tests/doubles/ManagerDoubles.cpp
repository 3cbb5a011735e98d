// The platform objects that the service creates itself: each only tells the installed listener.
#include "CurrentDouble.h"
#include "MockRecordingConfigManager.h"
#include "MockSIPConfigManager.h"

class SIPConfigManager::State
{};

class RecordingConfigManager::State
{};

SIPConfigManager::SIPConfigManager(SvcRTEContext* context, MgmtAgentIfc* agent)
{
    if (auto* const listener = CurrentDouble<MockSIPConfigManager>::get()) {
        listener->created(context, agent);
    }
}

SIPConfigManager::~SIPConfigManager()
{
    if (auto* const listener = CurrentDouble<MockSIPConfigManager>::get()) {
        listener->destroyed();
    }
}

void SIPConfigManager::initialise(bool apply)
{
    if (auto* const listener = CurrentDouble<MockSIPConfigManager>::get()) {
        listener->initialise(apply);
    }
}

void SIPConfigManager::switchOnLampsForForwarding()
{
    if (auto* const listener = CurrentDouble<MockSIPConfigManager>::get()) {
        listener->switchOnLampsForForwarding();
    }
}

void SIPConfigManager::checkDhcpProxyAddr()
{
    if (auto* const listener = CurrentDouble<MockSIPConfigManager>::get()) {
        listener->checkDhcpProxyAddr();
    }
}

int SIPConfigManager::getData(ManageableData& data)
{
    auto* const listener = CurrentDouble<MockSIPConfigManager>::get();
    return listener == nullptr ? 0 : listener->getData(data);
}

void SIPConfigManager::resetUserData()
{
    if (auto* const listener = CurrentDouble<MockSIPConfigManager>::get()) {
        listener->resetUserData();
    }
}

RecordingConfigManager::RecordingConfigManager(SvcRTEContext* context)
{
    if (auto* const listener = CurrentDouble<MockRecordingConfigManager>::get()) {
        listener->created(context);
    }
}

RecordingConfigManager::~RecordingConfigManager()
{
    if (auto* const listener = CurrentDouble<MockRecordingConfigManager>::get()) {
        listener->destroyed();
    }
}
