/// @file
/// Receives physical events.
#pragma once

#include <string>

#include "platform/physical/PhysDefs.h"

class Executable;

/// Receives the physical events that it has subscribed to. Every operation has a default that does nothing. Thread: the
/// key thread, with no lock held.
///
/// The order of the declarations is binary interface.
class physicalEventObserver
{
public:
    // NOLINTBEGIN(performance-unnecessary-value-param): texts come by value, binary interface
    /// A button of a subscribed group was used. The service ignores it while the phone is locked.
    /// - `function`: the key's function
    /// - `key`: number of the key
    /// - `action`: what happened to it
    /// - `text`: the key's label
    virtual void buttonPressedEvent(PhysDefs::keyFunctionType /*function*/, int /*key*/,
                                    PhysDefs::actionType /*action*/, std::string /*text*/)
    {}
    /// The hook switch moved: released when the handset is lifted. The service does nothing.
    virtual void hookswitchEvent(PhysDefs::actionType /*action*/) {}
    /// A plug moved. The service acts on the headset's (CSfi::SetHeadsetPlugged) and the line's (CSfi::JackEvent).
    virtual void jackEvent(PhysDefs::plugIdentifier /*plug*/, PhysDefs::plugStatus /*status*/) {}
    /// A device was added or removed.
    /// - `action`: what happened
    /// - `bus`: how it is connected
    /// - `deviceClass`: what it is
    /// - `vendor`: its maker, as it says itself
    /// - `product`: its name, as it says itself
    virtual void hotplugEvent(PhysDefs::hotplugAction /*action*/, PhysDefs::hotplugBus /*bus*/,
                              PhysDefs::hotplugClass /*deviceClass*/, std::string /*vendor*/, std::string /*product*/)
    {}
    // NOLINTEND(performance-unnecessary-value-param)
    /// A lamp changed.
    /// - `lamp`: number of the lamp
    /// - `mode`: how it shines now
    /// - `colour`: its colour now
    virtual void lampEvent(int /*lamp*/, PhysDefs::lampMode /*mode*/, PhysDefs::lampColour /*colour*/) {}
    /// A slider moved to `position`, in its own steps.
    virtual void sliderEvent(int /*position*/) {}
    /// The wheel turned by `steps`; less than 0: to the left.
    virtual void clickwheelEvent(int /*steps*/) {}
    /// Nobody has used the telephone for so many seconds.
    virtual void physicalInactivityTimerExpired(int /*seconds*/) {}
    /// The programmable keys can be used from now on.
    virtual void fpkAvailableEvent() {}
    /// The keys show their second level, or no longer.
    virtual void shiftChangeEvent(bool /*shifted*/) {}
    /// Somebody uses the telephone again.
    virtual void activityDetected() {}
    /// Asks for the channel that events are to be delivered on; left as it is: direct calls.
    virtual void getDestinationChannelName(std::string& /*name*/) {}
    /// Asks for the executable that subscribes.
    /// @return Null when there is none; the service returns itself.
    virtual Executable* getSubscribingService() { return nullptr; }
    /// One key shows its second level, or no longer.
    virtual void shiftChangeEventForCertainFPKey(bool /*shifted*/, int /*key*/) {}

protected:
    /// Never deleted through this interface.
    ~physicalEventObserver() = default;
};
