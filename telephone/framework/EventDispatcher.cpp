#include "telephone/framework/EventDispatcher.h"

#include <algorithm>
#include <exception>
#include <string_view>

#include "CommunicationsServiceEventIfc.h"
#include "platform/framework/Executable.h"
#include "telephone/framework/Log.h"
#include "telephone/time/VirtualTime.h"

namespace telephone {

namespace {

constexpr std::size_t kStartLength = 8;

std::string randomStart()
{
    constexpr std::string_view kLetters = "abcdefghijkmnpqrstuvwxyz23456789";
    std::string start;
    for (std::size_t i = 0; i < kStartLength; ++i) {
        start += kLetters[randomNumber() % kLetters.size()];
    }
    return start;
}

}  // namespace

EventDispatcher::EventDispatcher()
    : start_(randomStart())
    , thread_("events", [this] { run(); })
{}

EventDispatcher::~EventDispatcher()
{
    stop();
}

void EventDispatcher::post(Event event)
{
    std::lock_guard const lock(mutex_);
    if (stopped_) {
        return;
    }
    queue_.emplace_back(std::move(event));
    ++posted_;
    queued_.notifyOne();
}

Outcome<> EventDispatcher::subscribe(Executable* subscriber)
{
    auto* events = dynamic_cast<CommunicationsServiceEventIfc*>(subscriber);
    if (events == nullptr) {
        return refuse(RefusalKind::kBadInput, "the subscriber has no interface for events");
    }
    std::lock_guard const lock(mutex_);
    if (!isSubscribed(subscriber)) {
        subscribers_.push_back({subscriber, events});
    }
    return {};
}

void EventDispatcher::unsubscribe(Executable* subscriber)
{
    std::unique_lock lock(mutex_);
    std::erase_if(subscribers_, [&](Subscriber const& each) { return each.executable == subscriber; });
    if (std::this_thread::get_id() != thread_.id()) {
        delivered_.wait(lock, [&] { return receiving_ != subscriber; });
    }
}

bool EventDispatcher::isSubscribed(Executable const* executable) const
{
    return std::any_of(subscribers_.begin(), subscribers_.end(),
                       [&](Subscriber const& each) { return each.executable == executable; });
}

void EventDispatcher::stop()
{
    {
        std::lock_guard const lock(mutex_);
        stopped_ = true;
        queued_.notifyOne();
    }
    if (thread_.joinable()) {
        thread_.join();
    }
}

void EventDispatcher::run()
{
    std::unique_lock lock(mutex_);
    while (true) {
        queued_.wait(lock, [&] { return stopped_ || !queue_.empty(); });
        if (queue_.empty()) {
            return;
        }
        auto const event = std::move(queue_.front());
        queue_.pop_front();
        ++delivering_;
        deliver(event, lock);
    }
}

void EventDispatcher::deliver(Caused<Event> const& event, std::unique_lock<std::mutex>& lock)
{
    // Subscribers may change while one is called: each is looked up again before its turn.
    std::vector<Subscriber> const turn = subscribers_;
    for (Subscriber const& each : turn) {
        if (!isSubscribed(each.executable)) {
            continue;
        }
        receiving_ = each.executable;
        lock.unlock();
        try {
            event(*each.events);
        } catch (std::exception const& error) {
            log(kLogFailure, "events", "a subscriber failed on an event: {}", error.what());
        }
        lock.lock();
        receiving_ = nullptr;
        delivered_.notifyAll();
    }
}

}  // namespace telephone
