// The telephones of a fleet, each in a process of its own: started a few at a time, watched, started again when they
// end, and ended. The fleet owns them. One thread starts, waits and supervises; any thread may use them with the lock.
//
// Between the end of a telephone and its next start is a pause, which doubles each time until the telephone has run for
// a while, so that one that cannot run does not keep the machine busy.
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include <poll.h>

#include "telephone/base/Refusal.h"
#include "telephone/fleet/FleetTelephone.h"
#include "telephone/framework/WakeUp.h"
#include "telephone/time/SteadyClock.h"

namespace telephone {

class Members
{
public:
    struct Plan
    {
        int count = 1;
        std::vector<std::string> command;  // the program's file, and its options for every telephone
        std::string folder;                // of their folders; exists
        std::size_t startsAtOnce = 4;
        SteadyClock::duration firstPause = std::chrono::seconds(1);
        SteadyClock::duration longestPause = std::chrono::seconds(60);  // also the time after which it is forgotten
    };
    // Told, on the supervising thread and without the lock, of each end and each new start.
    using Note = std::function<void(std::string const& words)>;
    // The text of the configuration file of a telephone.
    using Configure = std::function<std::string(int number)>;

    // `stop` becomes readable when everything must end. Refused if a folder or a file cannot be made.
    [[nodiscard]] static Outcome<std::unique_ptr<Members>> make(Plan plan, Configure const& configure, int stop,
                                                                Note note);
    // Ends all of them and waits for it; those that do not end within seconds are killed.
    ~Members();
    Members(Members const&) = delete;
    Members& operator=(Members const&) = delete;

    // Starts all and waits until they run. `progress` is told how many do. Refused with the reason if one ends before
    // it runs. False: the stop came first.
    [[nodiscard]] Outcome<bool> start(std::function<void(int running)> const& progress);

    enum class Came
    {
        kInput,
        kDeadline,
        kStop,
    };
    // Supervises until `input` (-1: none) is readable, the deadline, or the stop.
    Came wait(int input, SteadyClock::time_point deadline);

    [[nodiscard]] std::unique_lock<std::mutex> lock() { return std::unique_lock(mutex_); }
    [[nodiscard]] int stop() const { return stop_; }
    [[nodiscard]] std::string const& folder() const { return plan_.folder; }

    // Whether a telephone has ended without being told to. The supervising thread.
    [[nodiscard]] bool hasFailures() const { return hasFailures_; }

    // --- with the lock
    [[nodiscard]] std::deque<FleetTelephone>& all() { return all_; }
    // "all", "7", "3-5", "1,4,9-12". Refused for numbers that are not there.
    [[nodiscard]] Outcome<std::vector<FleetTelephone*>> select(std::string_view numbers);
    // After startNow or end: the supervision has something new to wait for.
    void wakeUp() { wakeUp_.signal(); }

private:
    Members(Plan plan, int stop, Note note);

    [[nodiscard]] Outcome<FleetTelephone*> find(std::string_view number);
    [[nodiscard]] std::size_t starting() const;
    [[nodiscard]] std::vector<pollfd> waited(int input, SteadyClock::time_point& deadline);
    // Everything that has happened; notes are collected and told without the lock.
    void supervise();
    void takeOutput(FleetTelephone& telephone);
    void takeEnd(FleetTelephone& telephone);
    void actAtDeadline(FleetTelephone& telephone);
    void begin(FleetTelephone& telephone);
    [[nodiscard]] SteadyClock::duration nextPause(FleetTelephone const& telephone);

    Plan const plan_;
    int const stop_;
    Note const note_;
    std::mutex mutex_;
    std::deque<FleetTelephone> all_;
    std::vector<SteadyClock::duration> pauses_;  // before the next start of each
    std::vector<std::string> notes_;             // not told yet
    std::string failure_;                        // of the first start
    bool isStarted_ = false;
    bool hasFailures_ = false;
    WakeUp wakeUp_;
};

}  // namespace telephone
