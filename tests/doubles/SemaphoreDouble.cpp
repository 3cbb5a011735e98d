#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include <gtest/gtest.h>

#include "CurrentDouble.h"
#include "MockSemaphore.h"

class Semaphore::State
{
public:
    State(int initial, int maximum, bool inheritPriority)
        : initial_(initial)
        , maximum_(maximum)
        , free_(initial)
        , inheritPriority_(inheritPriority)
    {}

    bool inheritPriority() const { return inheritPriority_; }
    bool asItWasBuilt() const { return free_ == initial_; }

    bool take(int timeoutMilliseconds)
    {
        std::unique_lock hold(mutex_);
        if (free_ == 0 && holder_ == std::this_thread::get_id()) {
            ADD_FAILURE() << "a thread waits for a lock that it holds itself";
            return false;
        }
        auto const isFree = [this] { return free_ > 0; };
        if (timeoutMilliseconds == kNoTimeLimit) {
            changed_.wait(hold, isFree);
        } else if (!changed_.wait_for(hold, std::chrono::milliseconds(timeoutMilliseconds), isFree)) {
            return false;
        }
        --free_;
        holder_ = std::this_thread::get_id();
        return true;
    }

    void give()
    {
        std::lock_guard const hold(mutex_);
        if (free_ == maximum_) {
            ADD_FAILURE() << "a unit is given back that nobody took";
            return;
        }
        ++free_;
        holder_ = {};
        changed_.notify_one();
    }

private:
    int const initial_;
    int const maximum_;
    int free_;
    bool const inheritPriority_;
    std::thread::id holder_;
    std::mutex mutex_;
    std::condition_variable changed_;
};

Semaphore::Semaphore(int initial, int maximum, bool inheritPriority)
    : state_(std::make_unique<State>(initial, maximum, inheritPriority))
{
    if (auto* const listener = CurrentDouble<MockSemaphore>::get()) {
        listener->created(initial, maximum, inheritPriority);
    }
}

Semaphore::~Semaphore()
{
    EXPECT_TRUE(state_->asItWasBuilt()) << "a lock is destroyed while it is taken";
    if (auto* const listener = CurrentDouble<MockSemaphore>::get()) {
        listener->destroyed(state_->inheritPriority());
    }
}

bool Semaphore::take(int timeoutMilliseconds)
{
    bool const taken = state_->take(timeoutMilliseconds);
    if (auto* const listener = CurrentDouble<MockSemaphore>::get()) {
        listener->taken(state_->inheritPriority(), timeoutMilliseconds);
    }
    return taken;
}

void Semaphore::give()
{
    if (auto* const listener = CurrentDouble<MockSemaphore>::get()) {
        listener->given(state_->inheritPriority());
    }
    state_->give();
}
