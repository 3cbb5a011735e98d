// Work that must wait until the present callback has returned, such as destroying the object that it runs in. Owned by
// the exchange; used under the lock. Work still waiting at its destruction is dropped.
#pragma once

#include <chrono>
#include <functional>
#include <utility>
#include <vector>

#include "telephone/sip/Timer.h"

namespace telephone::exchange {

class DeferredWork
{
public:
    explicit DeferredWork(sip::EventLoop& loop)
        : timer_(loop)
    {}

    // Runs the work on the loop's thread with the lock held, in the order of the calls.
    void add(std::function<void()> work)
    {
        waiting_.push_back(std::move(work));
        timer_.start(std::chrono::milliseconds(0), [this] {
            for (auto const& each : std::exchange(waiting_, {})) {
                each();
            }
        });
    }

private:
    sip::Timer timer_;
    std::vector<std::function<void()>> waiting_;
};

}  // namespace telephone::exchange
