// Virtual time: a telephone whose every run can be repeated.
//
// While a VirtualTime exists, exactly one of the threads that were made here runs. It runs until it waits (Waiting.h,
// Condition.h) and then hands over to the first whose wait is over, in the order in which they began to wait, or to one
// drawn by the seed. When nobody can run, the time jumps to the first deadline, provided that a driver waits: the
// thread that made the VirtualTime, or one inside a Driving. Otherwise time stands until something comes from outside.
//
//     VirtualTime const time({.seed = 7});   // before any other thread
//     Telephone telephone(...);              // its timers, its SIP and its threads now follow it
//
// In real time every function here costs a look at one variable.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

#include "telephone/time/SteadyClock.h"

namespace telephone {

struct Party;

namespace detail {
extern std::atomic<bool> timeIsVirtual;
}

inline bool isVirtual()
{
    return detail::timeIsVirtual.load(std::memory_order_relaxed);
}

class VirtualTime
{
public:
    struct Settings
    {
        // 0: in plain order. Any other value draws who runs first, and how long a datagram takes.
        std::uint64_t seed = 0;
        std::chrono::system_clock::time_point start = std::chrono::sys_days(std::chrono::January / 1 / 2000);
        int stop = -1;  // descriptor: readable when the program must end, which ends every advance(); -1: none
        // Steps of one instant after which the run is ended, because the instant seems never to end.
        std::uint64_t mostSteps = 10'000'000;
    };

    // The exit status of a run that came to a standstill, or to an instant that never ends. Who waits for what is then
    // on standard error.
    static constexpr int kStandstill = 5;

    // Before any other thread. The caller becomes a driver.
    explicit VirtualTime(Settings settings);
    // After all others have ended.
    ~VirtualTime();
    VirtualTime(VirtualTime const&) = delete;
    VirtualTime& operator=(VirtualTime const&) = delete;
};

// While it exists, time moves for the waits of this thread.
class Driving
{
public:
    Driving();
    ~Driving();
    Driving(Driving const&) = delete;
    Driving& operator=(Driving const&) = delete;
};

// A thread of a library, which was not made here, takes part while this exists: it begins when its turn comes. Without
// effect inside another.
class Visit
{
public:
    Visit();
    ~Visit();
    Visit(Visit const&) = delete;
    Visit& operator=(Visit const&) = delete;

private:
    bool const enters_;
};

// A thread leaves the others to themselves while this exists, to wait for something outside virtual time, such as the
// end of a library's thread.
class Absence
{
public:
    Absence();
    ~Absence();
    Absence(Absence const&) = delete;
    Absence& operator=(Absence const&) = delete;

private:
    Party* const left_;
};

// From the seed; in real time from the system.
std::uint64_t randomNumber();

// The seed; 0 in real time.
std::uint64_t virtualSeed();

}  // namespace telephone
