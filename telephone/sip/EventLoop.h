// The event loop of the process: a thread that polls sockets and timers, and the recursive lock that guards all state
// of this folder. Created first and destroyed last; there can be only one at a time, because the SIP stack exists once
// per process. Every callback of this folder runs on the loop's thread with the lock held. Operations take the lock
// themselves, so that a single call from another thread needs no guard; a sequence of calls does.
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
    EventLoop();   // throws std::runtime_error if there is one already or the stack does not start
    ~EventLoop();  // stops
    EventLoop(EventLoop const&) = delete;
    EventLoop& operator=(EventLoop const&) = delete;

    // Start and end the thread; do nothing if it is running or ended already. stop() waits for the running callback and
    // must not be called on the loop's thread or with the lock held.
    void start();
    void stop();

    // Recursive; any thread. The outermost unlock on another thread than the loop's wakes the poll if a timer that was
    // started under the lock is now the first to expire. The names are those that std::lock_guard requires.
    void lock();
    void unlock();
    bool try_lock();

    // Runs a function on the loop's thread with the lock held, after the present callback, in the order of the calls.
    // Any thread. Functions still waiting when the loop ends are dropped.
    void post(std::function<void()> work);

    // Whether the calling thread is the loop's.
    bool isLoopThread() const;

    // Whether the calling thread holds the lock (always true in a callback). A thread that holds it must not wait for
    // the loop.
    bool isLockedByCaller() const;

private:
    struct Impl;

    void noteLocked() const;

    std::unique_ptr<Impl> impl_;
};

}  // namespace telephone::sip
