// Keeps the SIP settings of the configuration store and the telephone together. The service creates one and owns it;
// the telephone defines its members.
#pragma once

#include <memory>

class ManageableData;
class MgmtAgentIfc;
class SvcRTEContext;

class SIPConfigManager
{
public:
    SIPConfigManager(SvcRTEContext* context, MgmtAgentIfc* agent);
    virtual ~SIPConfigManager();
    SIPConfigManager(SIPConfigManager const&) = delete;
    SIPConfigManager& operator=(SIPConfigManager const&) = delete;

    // Loads the settings; `apply` puts them into force.
    virtual void initialise(bool apply);
    virtual void switchOnLampsForForwarding();
    // Takes over the proxy address that DHCP offers.
    virtual void checkDhcpProxyAddr();
    // Fills in the values in force; 0 when nothing was known.
    virtual int getData(ManageableData& data);
    virtual void resetUserData();

private:
    class State;
    std::unique_ptr<State> state_;
};
