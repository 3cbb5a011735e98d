#include "telephone/time/Waiting.h"

#include <array>
#include <thread>

#include "telephone/time/Conductor.h"
#include "telephone/time/VirtualTime.h"

namespace telephone {

namespace {

int pollFor(std::span<pollfd> files, int milliseconds)
{
    return ::poll(files.data(), files.size(), milliseconds);
}

int millisecondsUntil(SteadyClock::time_point deadline)
{
    if (deadline == kNoDeadline) {
        return -1;
    }
    auto const left = std::chrono::ceil<std::chrono::milliseconds>(deadline - SteadyClock::now());
    return static_cast<int>(std::max(left, std::chrono::milliseconds(0)).count());
}

}  // namespace

int pollUntil(std::span<pollfd> files, SteadyClock::time_point deadline, char const* what)
{
    if (ownParty == nullptr) {
        return pollFor(files, millisecondsUntil(deadline));
    }
    conductor().wait(*ownParty, {.what = what, .deadline = deadline, .files = files});
    return pollFor(files, 0);
}

bool isReadable(int descriptor)
{
    pollfd query{descriptor, POLLIN, 0};
    return ::poll(&query, 1, 0) > 0;
}

void noteReadyFile()
{
    if (isVirtual()) {
        conductor().noteReadyFile();
    }
}

int waitForEvents(int epoll, std::span<epoll_event> events, char const* what)
{
    int const most = static_cast<int>(events.size());
    if (ownParty == nullptr) {
        return epoll_wait(epoll, events.data(), most, -1);
    }
    std::array<pollfd, 1> const files{{{epoll, POLLIN, 0}}};
    conductor().wait(*ownParty, {.what = what, .files = files});
    return epoll_wait(epoll, events.data(), most, 0);
}

void sleepFor(SteadyClock::duration duration)
{
    if (ownParty == nullptr) {
        return std::this_thread::sleep_for(duration);
    }
    conductor().wait(*ownParty, {.what = "time to pass", .deadline = SteadyClock::now() + duration});
}

Outcome<> advance(SteadyClock::duration duration)
{
    if (ownParty == nullptr) {
        return refuse(RefusalKind::kNotSupported,
                      "time is real and cannot be moved: start the telephone with --time virtual");
    }
    Driving const driving;
    std::array<pollfd, 1> const files{{{conductor().settings().stop, POLLIN, 0}}};
    conductor().wait(
        *ownParty,
        {.what = "time to be moved", .deadline = SteadyClock::now() + duration, .files = files, .isPatient = true});
    return {};
}

void awaitRest()
{
    if (ownParty != nullptr) {
        conductor().wait(*ownParty, {.what = "rest", .deadline = SteadyClock::now(), .isPatient = true});
    }
}

}  // namespace telephone
