// What the framework needs to know of an executable that may have a thread of its own.
#pragma once

class Threadable
{
public:
    virtual ~Threadable() = default;

    // The body of the thread. It may return at once: an executable then works on the framework's threads alone.
    virtual void run() = 0;
    // Scheduling priority of that thread in the platform's unit; 0 is the platform's ordinary one.
    virtual int getThreadPriorityForPlatform() { return 0; }
    // The kind of thread; 0 is an ordinary one.
    virtual int type() { return 0; }
};
