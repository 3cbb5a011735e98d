// The faults that are active, and those that wait for their moment. Telephone owns the one object; any thread.
//
//     Faults faults({loop, exchange, settings, physical, readingRate}, timers);
//     faults.start(history, {});
//     faults.add("datagrams lost 2 at 3s");
//
// A fault begins at its moment, on the thread on which that comes: of the command, of the timers, or of the request. It
// ends after its duration, when it has done what it can, by name, when another of its kind begins, or with the
// telephone. Each beginning, each effect and each end is in the log.
#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/faults/FaultOrder.h"
#include "telephone/framework/EventHistory.h"

namespace telephone {

class TimerService;

class Faults
{
public:
    Faults(FaultTargets const& targets, TimerService& timers)
        : targets_(targets)
        , timers_(timers)
    {}
    Faults(Faults const&) = delete;
    Faults& operator=(Faults const&) = delete;

    // From the telephone's start on: the faults of the configuration. Refused if one of them is wrong; then none
    // begins.
    [[nodiscard]] Outcome<> start(EventHistory& history, std::vector<FaultConfiguration> const& configured);
    // Ends all faults; none begins any more.
    void stop();

    // Refused as FaultOrder::read.
    [[nodiscard]] Outcome<> add(std::string const& order);
    // Ends those with this name, active or waiting; an empty name: all. Refused if there is none of the name.
    [[nodiscard]] Outcome<> end(std::string const& name);
    // "active: store full for 2s", "waiting: datagrams lost 2 at 3s", in the order in which they were ordered.
    [[nodiscard]] std::vector<std::string> rows() const;

    // A request of an application is done.
    void noteActivity();

private:
    using Id = std::uint64_t;
    struct Fault
    {
        Id id = 0;
        FaultOrder order;
        bool isActive = false;
        int timer = 0;               // of its beginning, then of its end; 0: none
        std::uint64_t lastSeen = 0;  // number of the event up to which it has waited in vain
    };
    using Taken = std::list<Fault>;

    void arm(FaultOrder order);
    void begin(Id id);
    void noteEvents();
    void readEvents();
    // The number of the last event that every fault has looked at; nothing: none waits for an event.
    std::optional<std::uint64_t> eventsSeen() const;

    // Takes faults out of the list, and ends them.
    template <typename Predicate>
    Taken take(Predicate isMeant);
    void end(Taken faults);
    // Starts the timer of a fault that still exists.
    void time(Id id, std::chrono::milliseconds after, void (Faults::*run)(Id));
    void endNow(Id id);
    bool wasEnded(Id id);
    // With the mutex held; null: it has ended.
    Fault* find(Id id);

    FaultTargets const targets_;
    TimerService& timers_;
    EventHistory* history_ = nullptr;
    EventHistory::ListenerId listener_ = 0;
    mutable std::mutex mutex_;  // guards the rest; not held while an effect runs
    std::list<Fault> faults_;
    Id lastId_ = 0;
    bool stopped_ = false;
};

}  // namespace telephone
