// Preloaded into a telephone: its wall clock is off by the seconds that stand in the file which CLOCK_OFFSET_FILE names
// (eight bytes, changed while it runs), as if somebody had set the machine's clock. Clocks that count from the start of
// the machine go on as they are, as they do in the kernel.
#include <cstdint>
#include <cstdlib>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

namespace {
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

bool isWallClock(clockid_t clock)
{
    return clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE || clock == CLOCK_TAI;
}
}  // namespace

extern "C" int clock_gettime(clockid_t clock, timespec* now) noexcept
{
    int const result = static_cast<int>(syscall(SYS_clock_gettime, clock, now));
    if (result == 0 && isWallClock(clock)) {
        now->tv_sec += offset();
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
