// The one event loop of the process: a thread that polls sockets and timers, and the recursive lock that guards all
// state behind it. Created first and destroyed last; only one may exist at a time, because the SIP stack below is one
// per process. Every callback of this folder comes on the loop's thread with the lock held. Other threads take the
// lock to touch anything here: operations also take it themselves, so a single call needs no guard, a sequence does.
//
//     EventLoop loop;
//     loop.start();
//     { std::lock_guard guard(loop);  ... several operations as one ... }
#pragma once

#include <functional>
#include <memory>

namespace telephone::sip {

class EventLoop
{
public:
    EventLoop();   // throws std::runtime_error: a second one, or the stack does not start
    ~EventLoop();  // stops
    EventLoop(EventLoop const&) = delete;
    EventLoop& operator=(EventLoop const&) = delete;

    // Starts and ends the thread. Stopping waits for the callback that runs; it must not be asked for on the loop
    // thread or with the lock held. Both do nothing when there is nothing to do.
    void start();
    void stop();

    // Recursive, from any thread. The outermost unlock on a thread other than the loop's wakes the poll where a timer
    // was started under the lock that is now the first. Named as std::lock_guard and std::unique_lock want them.
    void lock();
    void unlock();
    bool try_lock();

    // Runs a function on the loop's thread, with the lock held, after what runs now; in the order of the calls. Any
    // thread. Functions still waiting when the loop ends are dropped.
    void post(std::function<void()> work);

    // Whether the calling thread is the loop's.
    bool isLoopThread() const;

    // Whether the calling thread holds the lock (always true in a callback). A thread that holds it must not wait for
    // something that the loop has to do.
    bool isLockedByCaller() const;

    struct Impl;
    Impl& impl() { return *impl_; }

private:
    void noteLocked() const;

    std::unique_ptr<Impl> impl_;
};

}  // namespace telephone::sip
