// Waiting for descriptors and for time itself. `what` says in the report of a standstill what the wait is for.
#pragma once

#include <span>

#include <poll.h>
#include <sys/epoll.h>

#include "telephone/base/Refusal.h"
#include "telephone/time/Conductor.h"
#include "telephone/time/SteadyClock.h"

namespace telephone {

// Waits until one of the files is ready, and fills in their `revents`. Returns how many are ready; 0: the deadline came
// first; -1 with errno: as ::poll.
int pollUntil(std::span<pollfd> files, SteadyClock::time_point deadline, char const* what);

bool isReadable(int descriptor);

// To be called after making a descriptor ready for which another thread of the process may wait. In real time, and of
// descriptors of other processes, the system tells.
void noteReadyFile();

// As ::epoll_wait without a deadline.
int waitForEvents(int epoll, std::span<epoll_event> events, char const* what);

// Virtual time only: waits for a condition that no lock guards.
template <typename Predicate>
void awaitVirtually(SteadyClock::time_point deadline, char const* what, Predicate isReady)
{
    conductor().wait(*ownParty, {.what = what, .isReady = ReadyCheck(isReady), .deadline = deadline});
}

void sleepFor(SteadyClock::duration duration);

// Virtual time moves on; returns after everything that happens until then, or when the program must end. Refused in
// real time.
[[nodiscard]] Outcome<> advance(SteadyClock::duration duration);

// In virtual time: returns when no thread can run without time moving. In real time at once.
void awaitRest();

}  // namespace telephone
