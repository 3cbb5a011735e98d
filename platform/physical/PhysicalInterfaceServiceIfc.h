// The telephone's keys, lamps and plugs. Registered with the framework as "PhysicalInterfaceServiceIfc"; observers are
// called on its own threads, never from within one of these operations.
#pragma once

#include <vector>

#include "platform/physical/PhysDefs.h"

class functionalEventObserver;
class physicalEventObserver;

class PhysicalInterfaceServiceIfc
{
public:
    // Both subscriptions add to what the observer has; false when nothing of the list is known.
    virtual bool subscribePhysicalEvents(physicalEventObserver* observer,
                                         std::vector<PhysDefs::SubscriptionGrp>& groups) = 0;
    virtual bool subscribeFunctionalEvents(functionalEventObserver* observer,
                                           std::vector<PhysDefs::SubscriptionGrp>& subscriptions) = 0;
    // Sets a lamp to a mode (PhysDefs::lampMode). `colour` and `option` are the lamp's own, 0 for its usual ones.
    virtual void setLamp(int lamp, int mode, int colour, int option) = 0;
    virtual PhysDefs::plugStatus getHeadsetJackStatus() = 0;
    // Forwarding was switched off as a whole: its lamps go out.
    virtual void forwardingCleared() = 0;

protected:
    ~PhysicalInterfaceServiceIfc() = default;
};
