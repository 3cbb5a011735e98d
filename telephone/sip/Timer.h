// A one-shot timer on the event loop. After it is cancelled or destroyed its function is not called any more. The
// function runs on the loop's thread with the lock held and may start, cancel or destroy its timer. Any thread.
#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace telephone::sip {

class EventLoop;

class Timer
{
public:
    explicit Timer(EventLoop& loop);
    Timer(EventLoop& loop, std::chrono::milliseconds delay, std::function<void()> expired);
    ~Timer();
    Timer(Timer&&) noexcept;
    Timer& operator=(Timer&&) noexcept;

    // Starts the timer, or restarts it with a new delay and function.
    void start(std::chrono::milliseconds delay, std::function<void()> expired);
    void cancel();
    bool isRunning() const;

private:
    struct Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace telephone::sip
