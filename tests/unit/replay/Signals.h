// Counts what happens on other threads, in the telephone's time.
#pragma once

#include <mutex>

#include "telephone/time/Condition.h"

class Signals
{
public:
    void add()
    {
        {
            std::lock_guard const lock(mutex_);
            ++count_;
        }
        changed_.notifyAll();
    }

    // Takes one; false: none came for so long.
    bool take(telephone::SteadyClock::duration longest)
    {
        std::unique_lock lock(mutex_);
        if (!changed_.waitFor(lock, longest, [this] { return count_ > 0; })) {
            return false;
        }
        --count_;
        return true;
    }

private:
    std::mutex mutex_;
    telephone::Condition changed_{"a signal"};
    int count_ = 0;
};
