// Keeps recording and security events, one line of text each. Like the dispatcher's, `post` may be called on any
// thread; `waitFor` waits for a number of events.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "tests/doubles/IgnoredEvents.h"

class EventLog : public IgnoredEvents
{
public:
    template <typename Event>
    void post(Event const& event)
    {
        std::lock_guard const guard(mutex_);
        event(*this);
        arrived_.notify_all();
    }
    std::vector<std::string> lines() const
    {
        std::lock_guard const guard(mutex_);
        return lines_;
    }
    bool waitFor(std::size_t count)
    {
        std::unique_lock guard(mutex_);
        return arrived_.wait_for(guard, std::chrono::seconds(20), [&] { return lines_.size() >= count; });
    }

    void callRecordingStatus(std::string const& lineURI, int callID, std::string const& recorded) override
    {
        lines_.push_back("recording " + lineURI + " " + std::to_string(callID) + " " + recorded);
    }
    void securityStatusChanged(std::string const& lineURI, int callID, sfiSecurityStatus status,
                               std::vector<int>& callIDs, std::vector<std::string>& lineURIs) override
    {
        std::string line = "security " + lineURI + " " + std::to_string(callID) + " " + std::to_string(status) + " of";
        for (std::size_t i = 0; i < callIDs.size(); ++i) {
            line += " " + lineURIs[i] + ":" + std::to_string(callIDs[i]);
        }
        lines_.push_back(line);
    }

private:
    mutable std::mutex mutex_;
    std::condition_variable arrived_;
    std::vector<std::string> lines_;
};
