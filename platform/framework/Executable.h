// The root of everything that the framework runs and passes around: services, proxies and the other parts that it
// registers by name. The framework owns executables and calls them from its own threads.
#pragma once

class SvcRTEContext;
using Context = SvcRTEContext;

class Executable
{
public:
    virtual ~Executable() = default;

    // Binds the executable to the framework. Called once, before any other operation; the context outlives it.
    virtual void init(Context& context) = 0;
    // Ends the work of the executable. The framework destroys it afterwards.
    virtual void shutdown() = 0;
    // One expiry of a timer that was started on behalf of this executable. Ids of others may arrive and are ignored.
    virtual void timerEvent(int /*timerId*/) {}
};
