#include "telephone/http/ConnectionThreads.h"

#include <chrono>
#include <utility>

namespace telephone {

namespace {

constexpr std::chrono::milliseconds kTimeToEnd{250};

}  // namespace

ConnectionThreads::ConnectionThreads(std::size_t count, std::function<void()> cut)
    : httplib::ThreadPool(count)
    , cut_(std::move(cut))
{}

void ConnectionThreads::enqueue(std::function<void()> connection)
{
    {
        std::lock_guard const lock(mutex_);
        ++open_;
    }
    httplib::ThreadPool::enqueue([this, connection = std::move(connection)] {
        connection();
        std::lock_guard const lock(mutex_);
        --open_;
        ended_.notify_all();
    });
}

void ConnectionThreads::shutdown()
{
    {
        std::unique_lock lock(mutex_);
        ended_.wait_for(lock, kTimeToEnd, [this] { return open_ == 0; });
    }
    cut_();
    httplib::ThreadPool::shutdown();
}

}  // namespace telephone
