// Preloaded into a telephone, it changes the telephone's clocks and no one else's.
//
//   CLOCK_OFFSET_FILE  names a file of eight bytes, changed while the telephone runs: the wall clock is off by that
//   many
//                      seconds, as if somebody had set the machine's clock. Clocks that count from the start of the
//                      machine are unaffected, as they are in the kernel.
//   CLOCK_RATE         those clocks run this many times as fast, and timed waits end accordingly sooner: a timer of 32
//                      seconds expires after 4 at a rate of 8.
#include <cstdint>
#include <cstdlib>

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/epoll.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

namespace {
constexpr std::int64_t kNanoseconds = 1'000'000'000;

std::int64_t const* openOffset()
{
    char const* const path = std::getenv("CLOCK_OFFSET_FILE");
    int const file = path == nullptr ? -1 : open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return nullptr;
    }
    void* const place = mmap(nullptr, sizeof(std::int64_t), PROT_READ, MAP_SHARED, file, 0);
    close(file);
    return place == MAP_FAILED ? nullptr : static_cast<std::int64_t const*>(place);
}

std::int64_t offset()
{
    static std::int64_t const* const place = openOffset();
    return place == nullptr ? 0 : *static_cast<std::int64_t const volatile*>(place);
}

int rate()
{
    static int const value = [] {
        char const* const text = std::getenv("CLOCK_RATE");
        return text == nullptr ? 1 : std::atoi(text);
    }();
    return value;
}

bool isWallClock(clockid_t clock)
{
    return clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE || clock == CLOCK_TAI;
}

bool isSteadyClock(clockid_t clock)
{
    return clock == CLOCK_MONOTONIC || clock == CLOCK_MONOTONIC_RAW || clock == CLOCK_MONOTONIC_COARSE ||
           clock == CLOCK_BOOTTIME;
}

std::int64_t nanoseconds(timespec const& time)
{
    return time.tv_sec * kNanoseconds + time.tv_nsec;
}

timespec timeOf(std::int64_t nanoseconds)
{
    return {nanoseconds / kNanoseconds, nanoseconds % kNanoseconds};
}
}  // namespace

extern "C" int clock_gettime(clockid_t clock, timespec* now) noexcept
{
    int const result = static_cast<int>(syscall(SYS_clock_gettime, clock, now));
    if (result == 0 && isWallClock(clock)) {
        now->tv_sec += offset();
    } else if (result == 0 && isSteadyClock(clock)) {
        *now = timeOf(nanoseconds(*now) * rate());
    }
    return result;
}

extern "C" int gettimeofday(timeval* now, void* /*zone*/) noexcept
{
    timespec exact{};
    clock_gettime(CLOCK_REALTIME, &exact);
    now->tv_sec = exact.tv_sec;
    now->tv_usec = exact.tv_nsec / 1000;
    return 0;
}

extern "C" time_t time(time_t* now) noexcept
{
    timespec exact{};
    clock_gettime(CLOCK_REALTIME, &exact);
    if (now != nullptr) {
        *now = exact.tv_sec;
    }
    return exact.tv_sec;
}

extern "C" int epoll_wait(int poll, epoll_event* events, int most, int timeout)
{
    int const real = timeout <= 0 ? timeout : (timeout + rate() - 1) / rate();
    return static_cast<int>(syscall(SYS_epoll_wait, poll, events, most, real));
}

extern "C" int pthread_cond_clockwait(pthread_cond_t* condition, pthread_mutex_t* mutex, clockid_t clock,
                                      timespec const* deadline)
{
    static auto const next =
        reinterpret_cast<decltype(&pthread_cond_clockwait)>(dlsym(RTLD_NEXT, "pthread_cond_clockwait"));
    timespec const real = isSteadyClock(clock) ? timeOf(nanoseconds(*deadline) / rate()) : *deadline;
    return next(condition, mutex, clock, &real);
}
