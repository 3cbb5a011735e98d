// The base of a service that the framework loads from a shared library and owns.
#pragma once

#include <string>

#include "platform/framework/Executable.h"
#include "platform/framework/Threadable.h"

class CommsChannelIfc;
class CommsChannelDataContainerMessage;

class Service : public Executable, public Threadable
{
public:
    // A raw message of a communications channel. Answers 0: not handled.
    // NOLINTNEXTLINE(performance-unnecessary-value-param): binary interface
    virtual int handleMsg(char const* /*message*/, int /*length*/, std::string /*sender*/, CommsChannelIfc& /*channel*/,
                          CommsChannelDataContainerMessage* /*container*/)
    {
        return 0;
    }
};
