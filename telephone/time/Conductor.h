// Decides which thread runs in virtual time. See VirtualTime.h for the rules; only the files of this folder use it.
//
// One mutex guards everything. The thread that ends its turn chooses the next one; when none can run and time must not
// move, the conductor's own thread polls all descriptors that somebody waits for. Conditions are evaluated by whichever
// thread chooses, while nobody runs: they may lock what guards them, and nobody waits with such a lock held.
//
// A look at the descriptors costs a system call. It is made when a wait for one begins, after `noteReadyFile`, and
// whenever nobody else can run at this moment.
#pragma once

#include <atomic>
#include <chrono>
#include <concepts>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <list>
#include <mutex>
#include <random>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include <poll.h>

#include "telephone/time/SteadyClock.h"
#include "telephone/time/VirtualTime.h"

namespace telephone {

// A condition, by reference: it must outlive the wait.
class ReadyCheck
{
public:
    ReadyCheck() = default;
    template <typename Predicate>
        requires(!std::same_as<Predicate, ReadyCheck>)
    explicit ReadyCheck(Predicate& predicate)
        : object_(&predicate)
        , check_([](void* object) { return static_cast<bool>((*static_cast<Predicate*>(object))()); })
    {}
    [[nodiscard]] bool operator()() const { return check_ != nullptr && check_(object_); }

private:
    void* object_ = nullptr;
    bool (*check_)(void*) = nullptr;
};

// What a thread waits for: the first of these.
struct Wait
{
    char const* what = "";  // for the report of a standstill
    ReadyCheck isReady = {};
    SteadyClock::time_point deadline = kNoDeadline;
    std::span<pollfd const> files = {};
    bool isPatient = false;  // until nobody else can run at that moment
};

// A thread that takes part.
struct Party
{
    std::string name;
    std::condition_variable turn = {};
    Wait wait = {};
    int driving = 0;  // scopes in which time moves for its waits
    bool isAbsent = false;
    bool hasReadyFile = false;  // at the latest look
};

class Conductor
{
public:
    explicit Conductor(VirtualTime::Settings settings);
    ~Conductor();
    Conductor(Conductor const&) = delete;
    Conductor& operator=(Conductor const&) = delete;

    // The calling thread is the first to take part, and runs.
    void begin(Party& party);
    // The calling thread takes part, from its next turn on; it waits for that. `admit` lets another thread be chosen,
    // which then calls `awaitTurn`.
    void enter(Party& party);
    void admit(Party& party);
    void awaitTurn(Party& party);
    // The calling thread, which runs, takes part no longer; or not until it enters again.
    void leave();
    void leaveForAWhile(Party& party);
    // The calling thread, which runs, waits.
    void wait(Party& party, Wait const& wait);
    // The thread that runs has made a descriptor ready, for which another may wait.
    void noteReadyFile() { mayHaveReadyFiles_ = true; }

    [[nodiscard]] SteadyClock::time_point now() const;
    [[nodiscard]] std::chrono::system_clock::time_point wallTime() const;
    [[nodiscard]] VirtualTime::Settings const& settings() const { return settings_; }
    // Called by the thread that runs.
    std::uint64_t randomNumber() { return numbers_(); }

private:
    using Parties = std::list<Party*>;

    // All with the mutex held.
    void add(Party& party);
    void handOver();  // the caller runs no longer
    bool chooseNext();
    bool moveTime();
    [[nodiscard]] std::vector<Parties::iterator> able(bool isPatient);
    // Polls the descriptors that somebody waits for; false: none is ready.
    bool lookAtFiles();
    [[nodiscard]] std::vector<pollfd> awaitedFiles() const;
    [[noreturn]] void giveUp(char const* why) const;

    void idle();  // the conductor's own thread

    VirtualTime::Settings const settings_;
    std::mt19937_64 numbers_;
    std::mt19937_64 order_;
    mutable std::mutex mutex_;
    Parties waiting_;
    Party* running_ = nullptr;
    std::size_t absent_ = 0;  // parties that have left for a while
    std::atomic<SteadyClock::time_point> now_;
    std::uint64_t steps_ = 0;  // of this instant
    std::atomic<bool> mayHaveReadyFiles_ = false;
    bool ends_ = false;
    bool idles_ = false;  // it is the own thread's turn, which polls
    std::condition_variable idleTurn_;
    int const arrival_;  // readable when somebody came while the own thread polls
    std::thread idler_;
};

// The present one; there is one while a VirtualTime exists.
Conductor& conductor();

// The calling thread's part; null: it takes none.
extern thread_local Party* ownParty;

}  // namespace telephone
