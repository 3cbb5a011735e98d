// Receives the key functions that it has subscribed to. The order of the declarations is binary interface.
#pragma once

#include <string>

#include "platform/physical/PhysDefs.h"

class Executable;

class functionalEventObserver
{
public:
    // NOLINTBEGIN(performance-unnecessary-value-param): texts come by value, binary interface
    virtual void functionPressedEvent(PhysDefs::keyFunctionType /*function*/, int /*key*/,
                                      PhysDefs::actionType /*action*/, std::string /*text*/)
    {}
    // NOLINTEND(performance-unnecessary-value-param)
    // The channel that events are to be delivered on; left as it is: direct calls.
    virtual void getDestinationChannelName(std::string& /*name*/) {}
    // The executable that subscribes.
    virtual Executable* getSubscribingService() { return nullptr; }

protected:
    ~functionalEventObserver() = default;
};
