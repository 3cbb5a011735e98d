#include "platform/framework/Semaphore.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>

// Without priority inheritance: all threads of the telephone have the same priority.
class Semaphore::State
{
public:
    State(int initial, int maximum)
        : maximum_(std::max(maximum, 1))
        , free_(std::clamp(initial, 0, maximum_))
    {}

    bool take(int timeoutMilliseconds)
    {
        std::unique_lock lock(mutex_);
        auto const isFree = [this] { return free_ > 0; };
        if (timeoutMilliseconds < 0) {
            given_.wait(lock, isFree);
        } else if (!given_.wait_for(lock, std::chrono::milliseconds(timeoutMilliseconds), isFree)) {
            return false;
        }
        --free_;
        return true;
    }

    void give()
    {
        std::lock_guard const lock(mutex_);
        free_ = std::min(free_ + 1, maximum_);
        given_.notify_one();
    }

private:
    std::mutex mutex_;
    std::condition_variable given_;
    int const maximum_;
    int free_;
};

Semaphore::Semaphore(int initial, int maximum, bool /*inheritPriority*/)
    : state_(std::make_unique<State>(initial, maximum))
{}

Semaphore::~Semaphore() = default;

bool Semaphore::take(int timeoutMilliseconds)
{
    return state_->take(timeoutMilliseconds);
}

void Semaphore::give()
{
    state_->give();
}
