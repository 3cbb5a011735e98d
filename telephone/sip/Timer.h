// A one-shot timer on the event loop. Owned by whoever waits; destroying or cancelling it makes sure that the function
// is not called any more. The function runs on the loop's thread with the lock held, and may start, cancel or destroy
// the timer it belongs to.
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

    // Starts, or starts again with a new delay and function.
    void start(std::chrono::milliseconds delay, std::function<void()> expired);
    void cancel();
    bool isRunning() const;

private:
    struct Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace telephone::sip
