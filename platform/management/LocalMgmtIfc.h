/// @file
/// The way to the telephone's configuration store.
#pragma once

class ManageableData;
class MgmtAgentIfc;

/// Writes settings and reports their changes. The telephone owns it and registers it with the framework as
/// "LocalMgmtIfc"; without it the service publishes nothing.
///
/// Thread: any. The service calls setManageableData under its publication lock and without CSfi's Lock.
class LocalMgmtIfc
{
public:
    /// Writes the items, all or none.
    /// @return Not 0: accepted and durable. 0: refused, nothing was written; the service then leaves the call control
    ///     as it is. Agents may be told of the change before it returns, on the calling thread.
    virtual int setManageableData(ManageableData& data) = 0;
    /// Registers an agent for changes of the items under a tag (QoraTags): its `manageableDataChanged` is called for
    /// each, on the thread that made or noticed the change.
    virtual void registerForTag(MgmtAgentIfc* agent, char const* tag) = 0;

protected:
    /// Never deleted through this interface.
    ~LocalMgmtIfc() = default;
};
