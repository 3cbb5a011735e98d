#include "telephone/http/ConnectionThreads.h"

#include <chrono>
#include <utility>

namespace telephone {

namespace {

constexpr std::chrono::milliseconds kTimeToEnd{250};

}  // namespace

ConnectionThreads::ConnectionThreads(std::size_t most, std::function<void()> cut)
    : most_(most)
    , cut_(std::move(cut))
{}

void ConnectionThreads::enqueue(std::function<void()> connection)
{
    std::lock_guard const lock(mutex_);
    ++open_;
    waiting_.push_back(std::move(connection));
    if (waiting_.size() > idle_ && threads_.size() < most_) {
        threads_.emplace_back([this] { work(); });
    }
    came_.notify_one();
}

void ConnectionThreads::work()
{
    std::unique_lock lock(mutex_);
    while (true) {
        ++idle_;
        came_.wait(lock, [this] { return isOver_ || !waiting_.empty(); });
        --idle_;
        if (waiting_.empty()) {
            return;
        }
        auto const connection = std::move(waiting_.front());
        waiting_.pop_front();
        lock.unlock();
        connection();
        lock.lock();
        --open_;
        ended_.notify_all();
    }
}

void ConnectionThreads::shutdown()
{
    {
        std::unique_lock lock(mutex_);
        ended_.wait_for(lock, kTimeToEnd, [this] { return open_ == 0; });
    }
    cut_();
    {
        std::lock_guard const lock(mutex_);
        isOver_ = true;
    }
    came_.notify_all();
    for (std::thread& each : threads_) {
        each.join();
    }
}

}  // namespace telephone
