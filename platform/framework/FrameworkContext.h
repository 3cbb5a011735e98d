// The framework as a loaded service sees it: looks things up by name. Every look-up has a default that finds nothing,
// so that a context can be as small as its use. The framework owns contexts; look-ups may come from any thread.
#pragma once

#include <string>

class Executable;
class Proxy;

class FrameworkContext
{
public:
    virtual ~FrameworkContext() = default;

    // The proxy that is registered for an interface on an application's channel, or null.
    virtual Proxy* findProxy(std::string const& /*interfaceName*/, std::string const& /*channelName*/)
    {
        return nullptr;
    }
    // The name of an executable's channel, or the empty text.
    virtual std::string findChannel(Executable* /*executable*/) { return {}; }
    // The executable that is registered under a name, or null.
    virtual Executable* findExecutable(std::string const& /*name*/) { return nullptr; }
};
