// A counting semaphore of the platform. The service holds two as locks: a count of one is a free lock.
#pragma once

#include <memory>

class Semaphore
{
public:
    static constexpr int kNoTimeLimit = -1;

    // `initial` units are free of at most `maximum`. `inheritPriority` asks the platform to lend a holder the priority
    // of who waits; a platform without that ignores it.
    Semaphore(int initial, int maximum, bool inheritPriority);
    ~Semaphore();
    Semaphore(Semaphore const&) = delete;
    Semaphore& operator=(Semaphore const&) = delete;

    // Takes one unit, waiting at most `timeoutMilliseconds` (kNoTimeLimit: without limit). False when the time ran out.
    bool take(int timeoutMilliseconds);
    // Gives one unit back.
    void give();

private:
    class State;
    std::unique_ptr<State> state_;
};
