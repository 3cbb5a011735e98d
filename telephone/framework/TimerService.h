// One-shot timers: numbered ones for the service and the platform, and ones with an action for the telephone's own
// parts. Telephone owns the one timer service. Expiries run on its thread, one after the other, with no lock held.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <mutex>
#include <utility>

#include "telephone/time/Condition.h"
#include "telephone/time/Thread.h"
#include "telephone/trace/Trace.h"

class Executable;

namespace telephone {

class TimerService
{
public:
    using Clock = SteadyClock;
    using Action = std::function<void()>;

    TimerService();
    ~TimerService();
    TimerService(TimerService const&) = delete;
    TimerService& operator=(TimerService const&) = delete;

    // Sets the executable whose timerEvent receives the ids of expired numbered timers; null: none. Waits for an expiry
    // in progress, unless the expiry itself makes this call.
    void deliverTo(Executable* target);

    // Starts a timer, numbered unless it has an action. The id is never 0 and is reused only after 2^31 others.
    int start(std::chrono::milliseconds duration, Action action = nullptr);
    // Cancels a timer. False if it has expired or never existed. Does not wait for a running action.
    bool cancel(int id);

    // Cancels all timers and ends the thread after an expiry in progress. `start` still returns ids, but their timers
    // never expire. The destructor calls it.
    void stop();

private:
    using Key = std::pair<Clock::time_point, int>;  // the id orders timers of the same instant

    void run();
    void expire(int id, Caused<Action> const& action, std::unique_lock<std::mutex>& lock);

    std::mutex mutex_;
    Condition changed_{"a timer"};
    Condition idle_{"the end of a timer's action"};
    std::map<Key, Caused<Action>> timers_;  // without an action: numbered
    Executable* target_ = nullptr;
    int lastId_ = 0;
    bool expiring_ = false;
    bool stopped_ = false;
    bool hasChanged_ = false;  // a timer was added since the thread looked
    Thread thread_;
};

}  // namespace telephone
