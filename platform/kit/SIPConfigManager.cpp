// SIP settings that are not kept.
#include "platform/management/SIPConfigManager.h"

#include "platform/kit/Missing.h"

namespace {

constexpr kit::Missing kMissing{"SIPConfigManager", "platform/management/SIPConfigManager.h"};

}  // namespace

class SIPConfigManager::State
{};

SIPConfigManager::SIPConfigManager(SvcRTEContext* /*context*/, MgmtAgentIfc* /*agent*/)
{
    kMissing.report("SIPConfigManager", "find the store in the context; keep the agent, and give it changes");
}

SIPConfigManager::~SIPConfigManager() = default;

void SIPConfigManager::initialise(bool /*apply*/)
{
    kMissing.report("initialise", "load the settings and put them into force");
}

void SIPConfigManager::switchOnLampsForForwarding()
{
    kMissing.report("switchOnLampsForForwarding", "show on the keys whether a forwarding rule is on");
}

void SIPConfigManager::checkDhcpProxyAddr()
{
    kMissing.report("checkDhcpProxyAddr", "take over the proxy address that DHCP offers");
}

int SIPConfigManager::getData(ManageableData& /*data*/)
{
    kMissing.report("getData", "fill in the values in force, and return 1");
    return 0;
}

void SIPConfigManager::resetUserData()
{
    kMissing.report("resetUserData", "set the user's settings back to those delivered");
}
