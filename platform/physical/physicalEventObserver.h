// Receives the physical events that it has subscribed to. Every operation has a default that does nothing. The order
// of the declarations is binary interface.
#pragma once

#include <string>

#include "platform/physical/PhysDefs.h"

class Executable;

class physicalEventObserver
{
public:
    // NOLINTBEGIN(performance-unnecessary-value-param): texts come by value, binary interface
    virtual void buttonPressedEvent(PhysDefs::keyFunctionType /*function*/, int /*key*/,
                                    PhysDefs::actionType /*action*/, std::string /*text*/)
    {}
    virtual void hookswitchEvent(PhysDefs::actionType /*action*/) {}
    virtual void jackEvent(PhysDefs::plugIdentifier /*plug*/, PhysDefs::plugStatus /*status*/) {}
    virtual void hotplugEvent(PhysDefs::hotplugAction /*action*/, PhysDefs::hotplugBus /*bus*/,
                              PhysDefs::hotplugClass /*deviceClass*/, std::string /*vendor*/, std::string /*product*/)
    {}
    // NOLINTEND(performance-unnecessary-value-param)
    virtual void lampEvent(int /*lamp*/, PhysDefs::lampMode /*mode*/, PhysDefs::lampColour /*colour*/) {}
    virtual void sliderEvent(int /*position*/) {}
    virtual void clickwheelEvent(int /*steps*/) {}
    virtual void physicalInactivityTimerExpired(int /*seconds*/) {}
    // The programmable keys can be used from now on.
    virtual void fpkAvailableEvent() {}
    virtual void shiftChangeEvent(bool /*shifted*/) {}
    virtual void activityDetected() {}
    // The channel that events are to be delivered on; left as it is: direct calls.
    virtual void getDestinationChannelName(std::string& /*name*/) {}
    // The executable that subscribes.
    virtual Executable* getSubscribingService() { return nullptr; }
    virtual void shiftChangeEventForCertainFPKey(bool /*shifted*/, int /*key*/) {}

protected:
    ~physicalEventObserver() = default;
};
