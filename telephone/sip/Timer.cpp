#include "telephone/sip/Timer.h"

#include <mutex>

#include "telephone/sip/EventLoop.h"
#include "telephone/sip/Stack.h"
#include "telephone/trace/Trace.h"

namespace telephone::sip {

struct Timer::Impl : std::enable_shared_from_this<Timer::Impl>
{
    explicit Impl(EventLoop& owner)
        : loop(owner)
    {
        tmr_init(&timer);
    }

    void expire()
    {
        auto const keepAlive = shared_from_this();
        auto const run = std::exchange(expired, {});
        if (run) {
            run();
        }
    }

    EventLoop& loop;
    tmr timer{};
    Caused<std::function<void()>> expired;
};

Timer::Timer(EventLoop& loop)
    : impl_(std::make_shared<Impl>(loop))
{}

Timer::Timer(EventLoop& loop, std::chrono::milliseconds delay, std::function<void()> expired)
    : Timer(loop)
{
    start(delay, std::move(expired));
}

Timer::~Timer()
{
    if (impl_) {
        cancel();
    }
}

Timer::Timer(Timer&&) noexcept = default;

Timer& Timer::operator=(Timer&& other) noexcept
{
    if (this == &other) {
        return *this;
    }
    if (impl_) {
        cancel();
    }
    impl_ = std::move(other.impl_);
    return *this;
}

void Timer::start(std::chrono::milliseconds delay, std::function<void()> expired)
{
    std::lock_guard guard(impl_->loop);
    impl_->expired = std::move(expired);
    auto const wait = delay.count() > 0 ? static_cast<std::uint64_t>(delay.count()) : 0;
    tmr_start(
        &impl_->timer, wait, [](void* object) { static_cast<Impl*>(object)->expire(); }, impl_.get());
}

void Timer::cancel()
{
    std::lock_guard guard(impl_->loop);
    tmr_cancel(&impl_->timer);
    impl_->expired = {};
}

bool Timer::isRunning() const
{
    std::lock_guard guard(impl_->loop);
    return tmr_isrunning(&impl_->timer);
}

}  // namespace telephone::sip
