#include "telephone/framework/WorkQueue.h"

#include <exception>
#include <utility>

#include "telephone/framework/Log.h"

namespace telephone {

WorkQueue::WorkQueue(std::string name, std::size_t capacity)
    : name_(std::move(name))
    , capacity_(capacity)
    , thread_(name_, [this] { run(); })
{}

WorkQueue::~WorkQueue()
{
    stop();
}

Outcome<> WorkQueue::post(Work work)
{
    {
        std::lock_guard const lock(mutex_);
        if (stopped_) {
            return refuse(RefusalKind::kUnavailable, name_ + " have stopped because the telephone is ending");
        }
        if (waiting_.size() >= capacity_) {
            return refuse(RefusalKind::kLimit, name_ + " are too far behind to take more work");
        }
        waiting_.push_back(std::move(work));
    }
    changed_.notifyAll();
    return {};
}

void WorkQueue::flush()
{
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return stopped_ || (waiting_.empty() && !working_); });
}

void WorkQueue::stop()
{
    {
        std::lock_guard const lock(mutex_);
        stopped_ = true;
        waiting_.clear();
    }
    changed_.notifyAll();
    if (thread_.joinable() && thread_.id() != std::this_thread::get_id()) {
        thread_.join();
    }
}

void WorkQueue::run()
{
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return stopped_ || !waiting_.empty(); });
        if (stopped_) {
            return;
        }
        auto const work = std::move(waiting_.front());
        waiting_.pop_front();
        working_ = true;
        lock.unlock();
        try {
            work();
        } catch (std::exception const& error) {
            log(kLogFailure, name_, "work failed: {}", error.what());
        }
        lock.lock();
        working_ = false;
        changed_.notifyAll();
    }
}

}  // namespace telephone
