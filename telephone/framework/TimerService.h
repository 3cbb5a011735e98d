// One-shot timers of the telephone: those that the service and the platform start by number, and those of the
// telephone's own parts, which bring what is to be done. Telephone owns the one timer service; expiries run on its
// thread, one after the other, with no lock held.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

class Executable;

namespace telephone {

class TimerService
{
public:
    using Clock = std::chrono::steady_clock;
    using Action = std::function<void()>;

    TimerService();
    ~TimerService();
    TimerService(TimerService const&) = delete;
    TimerService& operator=(TimerService const&) = delete;

    // Who is told of the expiry of numbered timers: Executable::timerEvent with the timer's id. Null: nobody. Returns
    // after an expiry that is under way, unless that is what calls here.
    void deliverTo(Executable* target);

    // Starts a timer whose expiry is told to the target. The id is never 0 and is not used again before 2^31 others.
    int start(std::chrono::milliseconds duration);
    // Starts a timer that runs an action. Ids are from the same sequence.
    int start(std::chrono::milliseconds duration, Action action);
    // Takes a timer back. False where it has expired or never was. An action that is running is not waited for.
    bool cancel(int id);

    // Forgets every timer and ends the thread, after an expiry that is under way. start answers ids still, whose
    // timers never expire. The destructor does so too.
    void stop();

private:
    using Key = std::pair<Clock::time_point, int>;  // ids keep the order of timers of the same instant

    int add(std::chrono::milliseconds duration, Action action);
    void run();
    void expire(int id, Action const& action, std::unique_lock<std::mutex>& lock);

    std::mutex mutex_;
    std::condition_variable changed_;
    std::condition_variable idle_;
    std::map<Key, Action> timers_;  // no action: numbered
    Executable* target_ = nullptr;
    int lastId_ = 0;
    bool expiring_ = false;
    bool stopped_ = false;
    std::thread thread_;
};

}  // namespace telephone
