/// @file
/// Receives key functions.
#pragma once

#include <string>

#include "platform/physical/PhysDefs.h"

class Executable;

/// Receives the key functions that it has subscribed to. Every operation has a default that does nothing. Thread: the
/// key thread, with no lock held.
///
/// The order of the declarations is binary interface.
class functionalEventObserver
{
public:
    // NOLINTBEGIN(performance-unnecessary-value-param): texts come by value, binary interface
    /// A key of a subscribed function was used.
    /// - `function`: the key's function
    /// - `key`: number of the key
    /// - `action`: what happened to it
    /// - `text`: the key's label
    virtual void functionPressedEvent(PhysDefs::keyFunctionType /*function*/, int /*key*/,
                                      PhysDefs::actionType /*action*/, std::string /*text*/)
    {}
    // NOLINTEND(performance-unnecessary-value-param)
    /// Asks for the channel that events are to be delivered on; left as it is: direct calls.
    virtual void getDestinationChannelName(std::string& /*name*/) {}
    /// Asks for the executable that subscribes.
    /// @return Null when there is none; the service returns itself.
    virtual Executable* getSubscribingService() { return nullptr; }

protected:
    /// Never deleted through this interface.
    ~functionalEventObserver() = default;
};
