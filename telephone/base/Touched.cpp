#include "telephone/base/Touched.h"

#include <atomic>
#include <exception>
#include <map>
#include <mutex>

namespace telephone {

namespace {

std::atomic<bool> isKept{false};
std::mutex namesMutex;
std::map<Touched, std::set<std::string>> names;

}  // namespace

void keepTouched()
{
    std::lock_guard const lock(namesMutex);
    names.clear();
    isKept.store(true, std::memory_order_relaxed);
}

void touch(Touched kind, std::string_view name) noexcept
{
    if (!isKept.load(std::memory_order_relaxed)) {
        return;
    }
    try {
        std::lock_guard const lock(namesMutex);
        names[kind].emplace(name);
    } catch (std::exception const&) {
        return;
    }
}

void touch(PhoneTimer timer) noexcept
{
    touch(Touched::kTimer, kPhoneTimerNames[static_cast<std::size_t>(timer)]);
}

std::set<std::string> touchedNames(Touched kind)
{
    std::lock_guard const lock(namesMutex);
    return names[kind];
}

}  // namespace telephone
