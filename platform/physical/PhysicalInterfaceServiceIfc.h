/// @file
/// The telephone's keys, lamps and plugs.
#pragma once

#include <vector>

#include "platform/physical/PhysDefs.h"

class functionalEventObserver;
class physicalEventObserver;

/// Keys, lamps and plugs. The telephone owns it and registers it with the framework as "PhysicalInterfaceServiceIfc";
/// without it the service sets no lamps and receives no presses.
///
/// Thread: any, with or without a lock held. Observers are called on the key thread with no lock held, never from
/// within one of these operations.
class PhysicalInterfaceServiceIfc
{
public:
    /// Adds to the physical events that an observer receives. The service subscribes when its start-up timer expires,
    /// and does not look at the answer.
    /// @param observer receives the events; must outlive the key thread's work
    /// @param groups what to report; read during the call only
    /// @return false when nothing of the list is known, or for null.
    virtual bool subscribePhysicalEvents(physicalEventObserver* observer,
                                         std::vector<PhysDefs::SubscriptionGrp>& groups) = 0;
    /// Adds to the key functions that an observer receives.
    /// @param observer receives the events; must outlive the key thread's work
    /// @param subscriptions what to report; read during the call only
    /// @return false when nothing of the list is known, or for null.
    virtual bool subscribeFunctionalEvents(functionalEventObserver* observer,
                                           std::vector<PhysDefs::SubscriptionGrp>& subscriptions) = 0;
    /// Sets a lamp. An unknown lamp or mode is logged and ignored.
    /// @param lamp number of the lamp, kLampHold or kLampSecondAlert
    /// @param mode a PhysDefs::lampMode
    /// @param colour a PhysDefs::lampColour; an unknown one is the lamp's usual one
    /// @param option always 0
    virtual void setLamp(int lamp, int mode, int colour, int option) = 0;
    /// Whether a headset is plugged in.
    /// @return PhysDefs::plugIn or plugOut.
    virtual PhysDefs::plugStatus getHeadsetJackStatus() = 0;
    /// Forwarding was switched off as a whole: its lamps go out.
    virtual void forwardingCleared() = 0;

protected:
    /// Never deleted through this interface.
    ~PhysicalInterfaceServiceIfc() = default;
};
