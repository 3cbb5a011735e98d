// Work that must not be done where it arises, because a lock is held there: one thread does it in order, with no lock
// held. The number of waiting pieces is limited, so that a part that hangs cannot exhaust the memory.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <string>

#include "telephone/base/Refusal.h"
#include "telephone/time/Condition.h"
#include "telephone/time/Thread.h"
#include "telephone/trace/Trace.h"

namespace telephone {

class WorkQueue
{
public:
    using Work = std::function<void()>;

    // name: the owner, for the log.
    explicit WorkQueue(std::string name, std::size_t capacity = 10000);
    ~WorkQueue();
    WorkQueue(WorkQueue const&) = delete;
    WorkQueue& operator=(WorkQueue const&) = delete;

    // Any thread, any lock held; never waits. Refused when the queue is full or has stopped.
    [[nodiscard]] Outcome<> post(Work work);
    // Waits until all work posted before is done. Not from within work.
    void flush();
    // Ends the thread after the current piece of work and drops the waiting ones, as does the destructor. Work may stop
    // the queue, but must not destroy it.
    void stop();

private:
    void run();

    std::string name_;
    std::size_t capacity_;
    std::mutex mutex_;
    Condition changed_{"work"};
    std::deque<Caused<Work>> waiting_;
    bool working_ = false;
    bool stopped_ = false;
    Thread thread_;
};

}  // namespace telephone
