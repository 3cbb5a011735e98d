// A condition variable that follows the telephone's time. `what` says in the report of a standstill what its waits are
// for. In real time it is the standard's.
#pragma once

#include <condition_variable>
#include <mutex>

#include "telephone/time/Conductor.h"
#include "telephone/time/SteadyClock.h"

namespace telephone {

class Condition
{
public:
    explicit Condition(char const* what)
        : what_(what)
    {}

    void notifyOne() { changed_.notify_one(); }
    void notifyAll() { changed_.notify_all(); }

    // Waits until `isReady`, which is evaluated with the lock held, possibly on another thread.
    template <typename Predicate>
    void wait(std::unique_lock<std::mutex>& lock, Predicate isReady)
    {
        waitUntil(lock, kNoDeadline, isReady);
    }

    // False: the deadline came first.
    template <typename Predicate>
    bool waitUntil(std::unique_lock<std::mutex>& lock, SteadyClock::time_point deadline, Predicate isReady)
    {
        if (ownParty == nullptr) {
            return waitInRealTime(lock, deadline, isReady);
        }
        std::mutex& mutex = *lock.mutex();
        auto check = [&] {
            std::lock_guard const guard(mutex);
            return static_cast<bool>(isReady());
        };
        lock.unlock();
        conductor().wait(*ownParty, {.what = what_, .isReady = ReadyCheck(check), .deadline = deadline});
        lock.lock();
        return isReady();
    }

    template <typename Predicate>
    bool waitFor(std::unique_lock<std::mutex>& lock, SteadyClock::duration duration, Predicate isReady)
    {
        return waitUntil(lock, SteadyClock::now() + duration, isReady);
    }

private:
    template <typename Predicate>
    bool waitInRealTime(std::unique_lock<std::mutex>& lock, SteadyClock::time_point deadline, Predicate& isReady)
    {
        if (deadline == kNoDeadline) {
            changed_.wait(lock, isReady);
            return true;
        }
        return changed_.wait_until(lock, deadline, isReady);
    }

    char const* const what_;
    std::condition_variable changed_;
};

}  // namespace telephone
