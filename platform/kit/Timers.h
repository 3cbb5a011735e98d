/// @file
/// One-shot timers for an executable.
#pragma once

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

class Executable;

namespace kit {

/// Timers as CSfi::StartTimer promises them. DefaultCSfi owns one. The first timer starts a thread, on which all
/// expiries are delivered with no lock held.
class Timers
{
public:
    /// Without an executable: expiries are lost until deliverTo.
    Timers() = default;
    /// Ends them.
    ~Timers();
    /// Not copied: the thread knows one object.
    Timers(Timers const&) = delete;
    /// Not copied.
    Timers& operator=(Timers const&) = delete;

    /// Names the executable whose timerEvent receives the expiries; null: nobody.
    void deliverTo(Executable* executable);
    /// Starts a timer.
    /// @param milliseconds the time; less than 0 counts as 0
    /// @return Its id, greater than 0. After `end` the timer never expires.
    int start(int milliseconds);
    /// Forgets all timers. No expiry is delivered when this returns, unless an expiry itself has called it.
    void end();

private:
    using Clock = std::chrono::steady_clock;

    void run();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::multimap<Clock::time_point, int> running_;
    Executable* executable_ = nullptr;
    int lastId_ = 0;
    bool ended_ = false;
    std::thread thread_;
};

}  // namespace kit
