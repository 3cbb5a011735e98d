// Closed at first; opened once, and then open for good. Any thread.
#pragma once

#include <mutex>

#include "telephone/time/Condition.h"

namespace telephone {

class Gate
{
public:
    explicit Gate(char const* what)
        : opened_(what)
    {}

    void open()
    {
        {
            std::lock_guard const lock(mutex_);
            isOpen_ = true;
        }
        opened_.notifyAll();
    }

    // False: it stayed closed for so long.
    bool waitFor(SteadyClock::duration longest)
    {
        std::unique_lock lock(mutex_);
        return opened_.waitFor(lock, longest, [this] { return isOpen_; });
    }

private:
    std::mutex mutex_;
    Condition opened_;
    bool isOpen_ = false;
};

}  // namespace telephone
