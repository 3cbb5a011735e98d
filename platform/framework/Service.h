/// @file
/// The base of a service that the framework loads from a shared library.
#pragma once

#include <string>

#include "platform/framework/Executable.h"
#include "platform/framework/Threadable.h"

class CommsChannelIfc;
class CommsChannelDataContainerMessage;

/// A service. The framework creates it with the library's factory, owns it and deletes it as an Executable.
class Service : public Executable, public Threadable
{
public:
    /// A raw message of a communications channel. Not used by this service, which is reached through an Invoker.
    /// @return 0: not handled.
    // NOLINTNEXTLINE(performance-unnecessary-value-param): binary interface
    virtual int handleMsg(char const* /*message*/, int /*length*/, std::string /*sender*/, CommsChannelIfc& /*channel*/,
                          CommsChannelDataContainerMessage* /*container*/)
    {
        return 0;
    }
};
