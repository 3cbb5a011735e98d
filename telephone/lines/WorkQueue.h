// Work that must not be done where it comes up, because a lock is held there: one thread does it, in the order in which
// it came, with no lock held. Bounded, so that a part that hangs can't eat the memory.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace telephone {

class WorkQueue
{
public:
    using Work = std::function<void()>;

    // `name` is for the log: whose queue it is.
    explicit WorkQueue(std::string name, std::size_t capacity = 10000);
    ~WorkQueue();
    WorkQueue(WorkQueue const&) = delete;
    WorkQueue& operator=(WorkQueue const&) = delete;

    // Any thread, any lock held; never waits. False, with a line in the log, when the queue is full or has stopped: the
    // work is not done then.
    bool post(Work work);
    // Waits until all that was posted before is done. Not from work itself.
    void flush();
    // Ends the thread after the work that runs; what still waits is dropped. The destructor does so too. Work itself
    // may stop the queue, but must not destroy it.
    void stop();

private:
    void run();

    std::string name_;
    std::size_t capacity_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Work> waiting_;
    bool working_ = false;
    bool stopped_ = false;
    std::thread thread_;
};

}  // namespace telephone
