#include "platform/kit/Timers.h"

#include <algorithm>
#include <limits>

#include "platform/framework/Executable.h"

kit::Timers::~Timers()
{
    end();
}

void kit::Timers::deliverTo(Executable* executable)
{
    std::lock_guard const hold(mutex_);
    executable_ = executable;
}

int kit::Timers::start(int milliseconds)
{
    std::lock_guard const hold(mutex_);
    lastId_ = lastId_ == std::numeric_limits<int>::max() ? 1 : lastId_ + 1;
    if (!ended_) {
        running_.emplace(Clock::now() + std::chrono::milliseconds(std::max(milliseconds, 0)), lastId_);
        if (!thread_.joinable()) {
            thread_ = std::thread([this] { run(); });
        }
        changed_.notify_all();
    }
    return lastId_;
}

void kit::Timers::end()
{
    {
        std::lock_guard const hold(mutex_);
        ended_ = true;
        running_.clear();
        changed_.notify_all();
    }
    if (thread_.joinable() && thread_.get_id() != std::this_thread::get_id()) {
        thread_.join();
    }
}

void kit::Timers::run()
{
    std::unique_lock hold(mutex_);
    while (!ended_) {
        if (running_.empty()) {
            changed_.wait(hold);
            continue;
        }
        auto const first = running_.begin();
        if (first->first > Clock::now()) {
            changed_.wait_until(hold, Clock::time_point(first->first));
            continue;
        }
        int const id = first->second;
        running_.erase(first);
        if (Executable* const executable = executable_) {
            hold.unlock();
            executable->timerEvent(id);
            hold.lock();
        }
    }
}
