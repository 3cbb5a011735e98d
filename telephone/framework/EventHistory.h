// The telephone's events as texts, with their numbers: the latest ones are kept, so that whoever was away can read what
// happened meanwhile. Telephone owns the one history; any thread reads.
//
//     EventHistory history(context, requests, dispatcher, 20000);
//     auto const portion = history.after(17, 100);   // events 18, 19, ... or a gap, if 18 is no longer kept
//
// Numbers begin at 1 with each start of the telephone, which has a random id.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace telephone {

class Channel;
class EventDispatcher;
class RequestRunner;
class TelephoneContext;

struct PastEvent
{
    std::uint64_t number = 0;
    std::chrono::system_clock::time_point time;  // of its delivery
    std::string text;
};

class EventHistory
{
public:
    using Events = std::vector<std::shared_ptr<PastEvent const>>;
    using ListenerId = std::uint64_t;

    // The events after a number. If the first of them are no longer kept, `missed` counts these, and `events` begins
    // with the oldest one that is.
    struct Portion
    {
        std::uint64_t missed = 0;
        Events events;
    };

    // Subscribes to the service's events. Throws std::runtime_error if the service refuses.
    EventHistory(TelephoneContext& context, RequestRunner& requests, EventDispatcher const& dispatcher,
                 std::size_t kept);
    ~EventHistory();
    EventHistory(EventHistory const&) = delete;
    EventHistory& operator=(EventHistory const&) = delete;

    // The id of this start.
    [[nodiscard]] std::string const& start() const;
    // The number of the latest event, which may still be on its way here; 0 before the first.
    [[nodiscard]] std::uint64_t latest() const;
    // At most `most` events, the oldest first.
    [[nodiscard]] Portion after(std::uint64_t number, std::size_t most) const;

    // Calls the listener after each new event, on the dispatcher's thread. It must not block, nor end listening itself.
    ListenerId listen(std::function<void()> listener);
    // The listener is not running on return.
    void endListening(ListenerId id);

private:
    void take();

    TelephoneContext& context_;
    EventDispatcher const& dispatcher_;
    std::size_t const kept_;
    mutable std::mutex mutex_;
    std::deque<std::shared_ptr<PastEvent const>> events_;
    std::uint64_t forgotten_ = 0;  // number of the latest event that is no longer kept
    std::mutex listening_;         // held while the listeners run
    std::map<ListenerId, std::function<void()>> listeners_;
    ListenerId lastListener_ = 0;
    std::shared_ptr<Channel> channel_;  // last: the events come through it
};

}  // namespace telephone
