/// @file
/// A counting semaphore of the platform. The service holds two, as locks: a count of one is a free lock.
#pragma once

#include <memory>

/// A counting semaphore. The telephone defines its members. Thread: any. Not recursive: a thread that takes a lock
/// twice waits for itself.
class Semaphore
{
public:
    static constexpr int kNoTimeLimit = -1;  ///< for `take`: wait as long as it lasts

    /// Creates a semaphore with `initial` free units.
    /// @param initial units that are free at first, 0 to `maximum`
    /// @param maximum most units that can be free, 1 or more
    /// @param inheritPriority asks the platform to lend a holder the priority of those that wait; a platform that
    ///     cannot do so ignores it
    Semaphore(int initial, int maximum, bool inheritPriority);
    /// Nobody may be waiting.
    ~Semaphore();
    /// Not copied: the waiting threads know one object.
    Semaphore(Semaphore const&) = delete;
    /// Not copied.
    Semaphore& operator=(Semaphore const&) = delete;

    /// Takes one unit, waiting for a free one.
    /// @param timeoutMilliseconds longest wait; less than 0 (kNoTimeLimit): without limit
    /// @return true when a unit was taken; false when the time ran out.
    bool take(int timeoutMilliseconds);
    /// Gives one unit back; any thread may. Beyond the maximum it is lost.
    void give();

private:
    class State;
    std::unique_ptr<State> state_;
};
