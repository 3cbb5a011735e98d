// Who takes part in the management of the telephone: receives settings and reports its own.
#pragma once

class ManageableData;

class MgmtAgentIfc
{
public:
    virtual ~MgmtAgentIfc() = default;

    // Settings to apply. 0: refused, nothing was applied. Items that may not be set are removed from the data.
    virtual int setData(ManageableData& data) = 0;
    // Fills in the values in force; 0 when it has none to give.
    virtual int getData(ManageableData& data) = 0;
    // Items that this agent registered for have changed in the store.
    virtual void manageableDataChanged(ManageableData& data) = 0;
    // Back to the delivered settings of the user.
    virtual void resetUserData() = 0;
};
