/// @file
/// The root of everything that the framework runs and passes around.
#pragma once

class SvcRTEContext;
/// The name by which executables know the runtime context.
using Context = SvcRTEContext;

/// Services, proxies and the other parts that the framework registers by name. The framework owns executables, or keeps
/// those that the telephone registers, and calls them from its own threads.
class Executable
{
public:
    /// The framework destroys an executable after `shutdown`.
    virtual ~Executable() = default;

    /// Binds the executable to the framework. Called once, before any other operation, on the thread that starts the
    /// telephone; `context` outlives the executable. A failure is logged: there is no way to report it.
    virtual void init(Context& context) = 0;
    /// Ends the work of the executable. Called once, on the thread that ends the telephone; the framework destroys the
    /// executable afterwards.
    virtual void shutdown() = 0;
    /// One expiry of a timer that was started on behalf of this executable. Called on the timer thread, with no lock
    /// held. Ids of other owners may arrive and are ignored.
    virtual void timerEvent(int /*timerId*/) {}
};
