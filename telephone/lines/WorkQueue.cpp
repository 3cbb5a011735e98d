#include "telephone/lines/WorkQueue.h"

#include <exception>
#include <utility>

#include "telephone/framework/Log.h"

namespace telephone {

WorkQueue::WorkQueue(std::string name, std::size_t capacity)
    : name_(std::move(name))
    , capacity_(capacity)
    , thread_([this] { run(); })
{}

WorkQueue::~WorkQueue()
{
    stop();
    if (thread_.joinable()) {
        thread_.join();
    }
}

bool WorkQueue::post(Work work)
{
    char const* refused = nullptr;
    {
        std::lock_guard const lock(mutex_);
        if (stopped_) {
            refused = "it has stopped";
        } else if (waiting_.size() >= capacity_) {
            refused = "too much is waiting";
        } else {
            waiting_.push_back(std::move(work));
        }
    }
    if (refused != nullptr) {
        log(kLogFailure, name_, "work is dropped: {}", refused);
        return false;
    }
    changed_.notify_all();
    return true;
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
    changed_.notify_all();
    if (thread_.joinable() && thread_.get_id() != std::this_thread::get_id()) {
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
        changed_.notify_all();
    }
}

}  // namespace telephone
