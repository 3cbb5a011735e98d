#include "telephone/management/StoreWatcher.h"

#include "telephone/management/Settings.h"

namespace telephone {

StoreWatcher::StoreWatcher(Settings& settings, std::chrono::milliseconds interval)
    : settings_(settings)
    , thread_("store watcher", [this, interval] { run(interval); })
{}

StoreWatcher::~StoreWatcher()
{
    {
        std::lock_guard const guard(mutex_);
        ends_ = true;
    }
    ended_.notifyAll();
    thread_.join();
}

void StoreWatcher::run(std::chrono::milliseconds interval)
{
    std::unique_lock guard(mutex_);
    while (!ended_.waitFor(guard, interval, [this] { return ends_; })) {
        guard.unlock();
        settings_.refresh();
        guard.lock();
    }
}

}  // namespace telephone
