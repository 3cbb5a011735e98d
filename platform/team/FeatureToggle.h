/// @file
/// Keys that switch a feature of the call server.
#pragma once

class LocalMgmtIfc;
class MgmtAgentIfc;
class PhysicalInterfaceServiceIfc;

/// Switches features of the call server on and off. The telephone owns the one object. Thread: any.
class FeatureToggle
{
public:
    /// The feature toggles of this telephone.
    /// @return Never null while the service exists.
    static FeatureToggle* Instance();

    /// Binds the toggles. Called by each `init`, as its last step before the timer; any of the first two may be null.
    /// @param physicalInterface the keys and lamps
    /// @param localMgmt the store
    /// @param agent the service
    virtual void ftInitialise(PhysicalInterfaceServiceIfc* physicalInterface, LocalMgmtIfc* localMgmt,
                              MgmtAgentIfc* agent) = 0;
    /// Switches the feature of a key to its other state. A key without a feature is logged and ignored.
    virtual void ftToggleKeyPressed(int keyNumber) = 0;

protected:
    /// Never deleted through this interface.
    ~FeatureToggle() = default;
};
