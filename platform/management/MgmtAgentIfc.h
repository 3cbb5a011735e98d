/// @file
/// A part of the telephone that has settings.
#pragma once

class ManageableData;

/// Receives settings and reports its own. The service implements it.
///
/// Thread: any, without CSfi's Lock. setData and manageableDataChanged may also arrive within
/// LocalMgmtIfc::setManageableData, on the publishing thread: they take none of the service's own locks.
class MgmtAgentIfc
{
public:
    /// Destroyed by its owner.
    virtual ~MgmtAgentIfc() = default;

    /// Offers settings to apply. While the call server holds forwarding and do-not-disturb, those items are removed
    /// from `data` first and each is logged; what the service publishes itself passes.
    /// @return 0: nothing was applied, because no item remained or CSfi::ApplyManageableData refused them. Not 0: the
    ///     items that remain in `data` are in force.
    virtual int setData(ManageableData& data) = 0;
    /// Fills in the values in force: of the items in `data`, or of all settings when it holds none.
    /// @return 0 when it has none to give, also before `init`.
    virtual int getData(ManageableData& data) = 0;
    /// Items that this agent registered for have changed in the store.
    virtual void manageableDataChanged(ManageableData& data) = 0;
    /// Sets the user's settings back to those delivered with the telephone. Nothing before `init`.
    virtual void resetUserData() = 0;
};
