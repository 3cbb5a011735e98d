// A semaphore that works: the service takes two as locks.
#include "platform/framework/Semaphore.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>

class Semaphore::State
{
public:
    std::mutex mutex;
    std::condition_variable given;
    int maximum = 1;
    int free = 0;
};

// The wish for priority inheritance is ignored, as the contract permits.
Semaphore::Semaphore(int initial, int maximum, bool /*inheritPriority*/)
    : state_(std::make_unique<State>())
{
    state_->maximum = std::max(maximum, 1);
    state_->free = std::clamp(initial, 0, state_->maximum);
}

Semaphore::~Semaphore() = default;

bool Semaphore::take(int timeoutMilliseconds)
{
    std::unique_lock hold(state_->mutex);
    auto const isFree = [this] { return state_->free > 0; };
    if (timeoutMilliseconds < 0) {
        state_->given.wait(hold, isFree);
    } else if (!state_->given.wait_for(hold, std::chrono::milliseconds(timeoutMilliseconds), isFree)) {
        return false;
    }
    --state_->free;
    return true;
}

void Semaphore::give()
{
    std::lock_guard const hold(state_->mutex);
    state_->free = std::min(state_->free + 1, state_->maximum);
    state_->given.notify_one();
}
