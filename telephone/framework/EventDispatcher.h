// Takes events from whoever sees them happen to every subscriber: the call engine, the lines and the settings post, one
// thread of its own delivers. Telephone owns the one dispatcher.
//
// Events are delivered in the order of their posting, to every subscriber of that moment, with no lock held: a
// subscriber may call any operation of the service. A subscriber that is slow delays the events of the others but
// never who posts, so a subscriber that cannot answer at once keeps a queue of its own (see Channel).
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

class CommunicationsServiceEventIfc;
class Executable;

namespace telephone {

class EventDispatcher
{
public:
    // Calls one operation of the subscriber it is given. Runs once for each subscriber.
    using Event = std::function<void(CommunicationsServiceEventIfc&)>;

    EventDispatcher();
    ~EventDispatcher();
    EventDispatcher(EventDispatcher const&) = delete;
    EventDispatcher& operator=(EventDispatcher const&) = delete;

    // Queues an event. Any thread, any lock held; never blocks on a subscriber. Does nothing after stop.
    void post(Event event);

    // Adds who is to hear of every event posted from now on. False where the executable is null or has no event
    // interface. A second subscription is a success and changes nothing.
    bool subscribe(Executable* subscriber);
    // Removes a subscriber. Afterwards it is not called any more: the call waits for a delivery that is under way,
    // unless that delivery is what calls here.
    void unsubscribe(Executable* subscriber);
    [[nodiscard]] std::size_t subscribers() const;

    // Waits until all that was posted before is delivered. Not for the delivering thread.
    void flush();
    // Delivers what is queued and ends the thread. The destructor does so too.
    void stop();

private:
    struct Subscriber
    {
        Executable* executable;
        CommunicationsServiceEventIfc* events;
    };

    void run();
    void deliver(Event const& event, std::unique_lock<std::mutex>& lock);

    mutable std::mutex mutex_;
    std::condition_variable posted_;
    std::condition_variable delivered_;
    std::deque<Event> queue_;
    std::vector<Subscriber> subscribers_;
    Executable* receiving_ = nullptr;  // who is being called
    bool delivering_ = false;
    bool stopped_ = false;
    std::thread thread_;
};

}  // namespace telephone
