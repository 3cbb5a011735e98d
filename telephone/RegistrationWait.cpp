#include "telephone/RegistrationWait.h"

namespace telephone {

void RegistrationWait::expect(std::set<int> lineNumbers)
{
    std::lock_guard const lock(mutex_);
    missing_ = std::move(lineNumbers);
}

bool RegistrationWait::wait(std::chrono::milliseconds most)
{
    std::unique_lock lock(mutex_);
    return changed_.waitFor(lock, most, [this] { return missing_.empty(); });
}

void RegistrationWait::registrationChanged(int lineNumber, bool /*registered*/)
{
    std::lock_guard const lock(mutex_);
    missing_.erase(lineNumber);
    changed_.notifyAll();
}

}  // namespace telephone
