/// @file
/// What the framework needs to know of an executable that may have a thread of its own.
#pragma once

/// An executable with a thread. The framework asks once, before it starts the thread.
class Threadable
{
public:
    /// Destroyed by the framework, when `run` has returned.
    virtual ~Threadable() = default;

    /// The body of the thread. It may return at once: an executable then works on the framework's threads alone.
    virtual void run() = 0;
    /// Scheduling priority of that thread.
    /// @return A value in the platform's unit; 0 is the platform's ordinary priority.
    virtual int getThreadPriorityForPlatform() { return 0; }
    /// The kind of thread.
    /// @return A value of the platform; 0 is an ordinary thread.
    virtual int type() { return 0; }
};
