// Checks every half second whether another program has written into the store file, and puts its values into force.
// Telephone owns it; a telephone with its store in memory has none.
#pragma once

#include <chrono>
#include <mutex>

#include "telephone/time/Condition.h"
#include "telephone/time/Thread.h"

namespace telephone {

class Settings;

class StoreWatcher
{
public:
    explicit StoreWatcher(Settings& settings, std::chrono::milliseconds interval = std::chrono::milliseconds(500));
    ~StoreWatcher();
    StoreWatcher(StoreWatcher const&) = delete;
    StoreWatcher& operator=(StoreWatcher const&) = delete;

private:
    void run(std::chrono::milliseconds interval);

    Settings& settings_;
    std::mutex mutex_;
    Condition ended_{"the next look at the store"};
    bool ends_ = false;
    Thread thread_;
};

}  // namespace telephone
