// Keys that switch a feature of the call server on and off. The telephone owns the singleton.
#pragma once

class LocalMgmtIfc;
class MgmtAgentIfc;
class PhysicalInterfaceServiceIfc;

class FeatureToggle
{
public:
    static FeatureToggle* Instance();

    virtual void ftInitialise(PhysicalInterfaceServiceIfc* physicalInterface, LocalMgmtIfc* localMgmt,
                              MgmtAgentIfc* agent) = 0;
    virtual void ftToggleKeyPressed(int keyNumber) = 0;

protected:
    ~FeatureToggle() = default;
};
