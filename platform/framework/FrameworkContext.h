/// @file
/// The framework as a loaded service sees it: it looks things up by name.
#pragma once

#include <string>

class Executable;
class Proxy;

/// Look-ups by name. Every one has a default that finds nothing, so that a context can be as small as its use.
///
/// The framework owns contexts, and everything that a look-up returns. Thread: any.
class FrameworkContext
{
public:
    /// A context is destroyed after everything that was bound to it.
    virtual ~FrameworkContext() = default;

    /// Finds the proxy that carries the events of an interface to an application. A framework may create it here, on
    /// first use.
    /// - `interfaceName`: the event interface, for example "CommunicationsServiceEventIfc"
    /// - `channelName`: the application's channel
    /// @return The proxy; null when the channel is not open or the interface is unknown. A request to subscribe then
    ///     fails.
    virtual Proxy* findProxy(std::string const& /*interfaceName*/, std::string const& /*channelName*/)
    {
        return nullptr;
    }
    /// Finds the channel that an executable's events go to.
    /// @return Its name; empty for null and for an executable without a channel.
    virtual std::string findChannel(Executable* /*executable*/) { return {}; }
    /// Finds what is registered under a name.
    /// @return The executable, or null. The service logs a name that is not found and goes on without the feature.
    virtual Executable* findExecutable(std::string const& /*name*/) { return nullptr; }
};
