// The way to the telephone's configuration store. Registered with the framework as "LocalMgmtIfc".
#pragma once

class ManageableData;
class MgmtAgentIfc;

class LocalMgmtIfc
{
public:
    // Writes the items. Not 0: accepted and durable. Agents may be told of the change before it returns, on the calling
    // thread.
    virtual int setManageableData(ManageableData& data) = 0;
    // From now on the agent hears of changes under the tag (QoraTags).
    virtual void registerForTag(MgmtAgentIfc* agent, char const* tag) = 0;

protected:
    ~LocalMgmtIfc() = default;
};
