#include "platform/framework/Semaphore.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>

#include "telephone/framework/HeldSemaphores.h"
#include "telephone/time/Condition.h"

namespace {

std::atomic<int> held{0};

}  // namespace

// Without priority inheritance: all threads of the telephone have the same priority.
class Semaphore::State
{
public:
    std::mutex mutex;
    telephone::Condition given{"a semaphore"};
    int maximum = 1;
    int free = 0;
};

Semaphore::Semaphore(int initial, int maximum, bool /*inheritPriority*/)
    : state_(std::make_unique<State>())
{
    state_->maximum = std::max(maximum, 1);
    state_->free = std::clamp(initial, 0, state_->maximum);
}

Semaphore::~Semaphore() = default;

bool Semaphore::take(int timeoutMilliseconds)
{
    std::unique_lock lock(state_->mutex);
    auto const isFree = [this] { return state_->free > 0; };
    if (timeoutMilliseconds < 0) {
        state_->given.wait(lock, isFree);
    } else if (!state_->given.waitFor(lock, std::chrono::milliseconds(timeoutMilliseconds), isFree)) {
        return false;
    }
    --state_->free;
    ++held;
    return true;
}

void Semaphore::give()
{
    std::lock_guard const lock(state_->mutex);
    if (state_->free < state_->maximum) {
        ++state_->free;
        --held;
    }
    state_->given.notifyOne();
}

int telephone::heldSemaphores()
{
    return held;
}
