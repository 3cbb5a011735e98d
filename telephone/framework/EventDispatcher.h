// Delivers events to all subscribers: the call engine, the lines and the settings post them, the dispatcher's own
// thread delivers. Telephone owns the one dispatcher.
//
// Events are delivered in the order of posting, to the subscribers of that moment, with no lock held: a subscriber may
// call any operation of the service. A slow subscriber delays the events of the others but never blocks `post`, so a
// subscriber that may be slow keeps a queue of its own (see Channel).
//
// Events are numbered from 1 in the order of posting. What was changed before `posted` was read is contained in the
// events up to that number.
#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/time/Condition.h"
#include "telephone/time/Thread.h"
#include "telephone/trace/Trace.h"

class CommunicationsServiceEventIfc;
class Executable;

namespace telephone {

class EventDispatcher
{
public:
    // Calls one operation of the given subscriber. Runs once for each subscriber.
    using Event = std::function<void(CommunicationsServiceEventIfc&)>;

    EventDispatcher();
    ~EventDispatcher();
    EventDispatcher(EventDispatcher const&) = delete;
    EventDispatcher& operator=(EventDispatcher const&) = delete;

    // Queues an event. Any thread, with any lock held; never waits for a subscriber. Does nothing after stop.
    void post(Event event);

    // Adds a subscriber to all events posted from now on. Refused if the executable is null or has no event interface.
    // A second subscription succeeds and changes nothing.
    [[nodiscard]] Outcome<> subscribe(Executable* subscriber);
    // Removes a subscriber. It is not called after the return: unsubscribe waits for a delivery in progress, unless the
    // delivery itself makes this call.
    void unsubscribe(Executable* subscriber);

    // The id of this start of the telephone: eight letters and digits, different at each start.
    [[nodiscard]] std::string const& start() const { return start_; }
    // The number of the latest event posted; 0 before the first. Any thread.
    [[nodiscard]] std::uint64_t posted() const { return posted_; }
    // The number of the event that is being delivered; on the dispatcher's thread.
    [[nodiscard]] std::uint64_t delivering() const { return delivering_; }

    // Delivers the queued events and ends the thread. The destructor calls it.
    void stop();

private:
    struct Subscriber
    {
        Executable* executable;
        CommunicationsServiceEventIfc* events;
    };

    // With the lock held.
    [[nodiscard]] bool isSubscribed(Executable const* executable) const;
    void run();
    void deliver(Caused<Event> const& event, std::unique_lock<std::mutex>& lock);

    std::string const start_;
    std::mutex mutex_;
    Condition queued_{"an event"};
    Condition delivered_{"the end of a delivery"};
    std::deque<Caused<Event>> queue_;
    std::atomic<std::uint64_t> posted_{0};
    std::uint64_t delivering_ = 0;
    std::vector<Subscriber> subscribers_;
    Executable* receiving_ = nullptr;  // the subscriber being called
    bool stopped_ = false;
    Thread thread_;
};

}  // namespace telephone
