#include "telephone/framework/TimerService.h"

#include <algorithm>
#include <exception>
#include <limits>

#include "platform/framework/Executable.h"
#include "telephone/framework/Log.h"
#include "telephone/trace/TimerStep.h"

namespace telephone {

TimerService::TimerService()
    : thread_("timers", [this] { run(); })
{}

TimerService::~TimerService()
{
    stop();
}

void TimerService::deliverTo(Executable* target)
{
    std::unique_lock lock(mutex_);
    target_ = target;
    if (std::this_thread::get_id() != thread_.id()) {
        idle_.wait(lock, [&] { return !expiring_; });
    }
}

int TimerService::start(std::chrono::milliseconds duration, Action action)
{
    std::lock_guard const lock(mutex_);
    lastId_ = lastId_ == std::numeric_limits<int>::max() ? 1 : lastId_ + 1;
    if (!stopped_) {
        timers_.emplace(Key{Clock::now() + duration, lastId_}, Caused(std::move(action)));
    }
    hasChanged_ = true;
    changed_.notifyOne();
    return lastId_;
}

bool TimerService::cancel(int id)
{
    std::lock_guard const lock(mutex_);
    auto const found =
        std::find_if(timers_.begin(), timers_.end(), [&](auto const& timer) { return timer.first.second == id; });
    if (found == timers_.end()) {
        return false;
    }
    timers_.erase(found);
    return true;
}

void TimerService::stop()
{
    {
        std::lock_guard const lock(mutex_);
        stopped_ = true;
        timers_.clear();
        changed_.notifyOne();
    }
    if (thread_.joinable()) {
        thread_.join();
    }
}

void TimerService::run()
{
    std::unique_lock lock(mutex_);
    while (!stopped_) {
        auto const first = timers_.begin();
        auto const due = first == timers_.end() ? kNoDeadline : first->first.first;
        if (Clock::now() < due) {
            hasChanged_ = false;
            changed_.waitUntil(lock, due, [this] { return stopped_ || hasChanged_; });
            continue;
        }
        int const id = first->first.second;
        auto const action = std::move(first->second);
        timers_.erase(first);
        expire(id, action, lock);
    }
}

void TimerService::expire(int id, Caused<Action> const& action, std::unique_lock<std::mutex>& lock)
{
    Executable* const target = target_;
    expiring_ = true;
    lock.unlock();
    try {
        if (action) {
            action();
        } else if (target != nullptr) {
            TraceScope const scope(action.cause());
            timerRanOut(PhoneTimer::kService);
            target->timerEvent(id);
        }
    } catch (std::exception const& error) {
        log(kLogFailure, "timers", "timer {} failed: {}", id, error.what());
    }
    lock.lock();
    expiring_ = false;
    idle_.notifyAll();
}

}  // namespace telephone
