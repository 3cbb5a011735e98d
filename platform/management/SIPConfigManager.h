/// @file
/// The SIP settings of the configuration store.
#pragma once

#include <memory>

class ManageableData;
class MgmtAgentIfc;
class SvcRTEContext;

/// Keeps the SIP settings of the store and the telephone together. The service creates one in its first `init` and
/// deletes it in its destructor; the telephone defines its members.
///
/// Thread: any, without CSfi's Lock.
class SIPConfigManager
{
public:
    /// Finds the store in the context.
    /// @param context the framework's; outlives the manager
    /// @param agent the service, which receives management data from now on
    SIPConfigManager(SvcRTEContext* context, MgmtAgentIfc* agent);
    /// The agent receives no more data when this returns.
    virtual ~SIPConfigManager();
    /// Not copied: an agent has one manager.
    SIPConfigManager(SIPConfigManager const&) = delete;
    /// Not copied.
    SIPConfigManager& operator=(SIPConfigManager const&) = delete;

    /// Loads the settings. Called by `init` before CSfi::Initialise, with true, and only where there is call control.
    /// @param apply whether they are put into force
    virtual void initialise(bool apply);
    /// Shows on the keys whether a forwarding rule is on, now and after each change. Called when the keys can be used.
    virtual void switchOnLampsForForwarding();
    /// Takes over the proxy address that DHCP offers, if the telephone asks for one. Called right after
    /// switchOnLampsForForwarding.
    virtual void checkDhcpProxyAddr();
    /// Fills in the values in force: of the items in `data`, or of all settings when it holds none.
    /// @return 0 when no item is known.
    virtual int getData(ManageableData& data);
    /// Sets the user's settings back to those delivered with the telephone.
    virtual void resetUserData();

private:
    class State;
    std::unique_ptr<State> state_;
};
