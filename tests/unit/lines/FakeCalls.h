// A call engine for tests of lines and keys: records the operations requested, and lets a test change its calls. Its
// lock is recursive like the phone lock, and knows whether the calling thread holds it.
#pragma once

#include <algorithm>
#include <atomic>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "telephone/calls/CallObserver.h"
#include "telephone/calls/PhoneCalls.h"

namespace telephone {

class FakeCalls final : public PhoneCalls
{
public:
    void lock() override
    {
        mutex_.lock();
        if (depth_++ == 0) {
            holder_ = std::this_thread::get_id();
        }
    }
    void unlock() override
    {
        if (--depth_ == 0) {
            holder_ = std::thread::id();
        }
        mutex_.unlock();
    }
    bool isLockedByCaller() const { return holder_.load() == std::this_thread::get_id(); }

    std::vector<CallSnapshot> calls() const override
    {
        std::lock_guard const lock(mutex_);
        return calls_;
    }
    std::optional<CallSnapshot> call(int callID) const override
    {
        std::lock_guard const lock(mutex_);
        auto const found = find(callID);
        return found == calls_.end() ? std::nullopt : std::optional(*found);
    }
    std::optional<CallSnapshot> activeCall() const override
    {
        std::lock_guard const lock(mutex_);
        auto const found = std::find_if(calls_.begin(), calls_.end(), [](auto const& each) { return each.active(); });
        return found == calls_.end() ? std::nullopt : std::optional(*found);
    }
    int freeCallID() override { return nextCallID_++; }

    Outcome<> make(LineAddress const& place, int callID, std::string const& destination, CallPurpose purpose) override
    {
        std::string const kind = purpose == CallPurpose::kConsultation ? "consult " : "make ";
        return note(kind + place.lineURI + " " + std::to_string(callID) + " " + destination);
    }
    Outcome<> answer(int callID) override { return note("answer " + std::to_string(callID)); }
    Outcome<> clear(int callID) override { return note("clear " + std::to_string(callID)); }
    Outcome<> hold(int callID) override { return note("hold " + std::to_string(callID)); }
    Outcome<> retrieve(int callID) override { return note("retrieve " + std::to_string(callID)); }
    Outcome<> deflect(int callID, std::string const& destination) override
    {
        return note("deflect " + std::to_string(callID) + " " + destination);
    }
    Outcome<> blindTransfer(int callID, std::string const& destination) override
    {
        return note("transfer " + std::to_string(callID) + " " + destination);
    }
    Outcome<> pickup(LineAddress const& place, int callID, std::string const& number) override
    {
        return note("pickup " + place.lineURI + " " + std::to_string(callID) + " " + number);
    }
    Outcome<> takeOver(LineAddress const& place, int callID, PickupTarget const& target) override
    {
        return note("take over " + place.lineURI + " " + std::to_string(callID) + " " + target.targetURI);
    }
    void featureFailed(int recordLine, sfiFeature feature, sfiFeatureFailure failure) override
    {
        static_cast<void>(note("failed " + std::to_string(recordLine) + " " + std::to_string(feature) + " " +
                               std::to_string(failure)));
    }

    // The operations requested since the last call, in order.
    std::vector<std::string> takeAsked()
    {
        std::lock_guard const lock(mutex_);
        return std::exchange(asked_, {});
    }
    // All operations are refused from now on.
    void refuseAll() { refuses_ = true; }

    // Adds, changes or ends a call, and tells the observer.
    void change(CallObserver& observer, CallSnapshot const& now)
    {
        std::lock_guard const lock(*this);
        auto const known = find(now.callID);
        std::optional<CallSnapshot> before;
        if (known != calls_.end()) {
            before = *known;
            calls_.erase(known);
        }
        if (!now.ended()) {
            calls_.push_back(now);
        }
        observer.callChanged(now, before ? &*before : nullptr);
    }

private:
    std::vector<CallSnapshot>::const_iterator find(int callID) const
    {
        return std::find_if(calls_.begin(), calls_.end(),
                            [callID](CallSnapshot const& each) { return each.callID == callID; });
    }
    Outcome<> note(std::string operation)
    {
        std::lock_guard const lock(mutex_);
        asked_.push_back(std::move(operation));
        return refuses_ ? Outcome<>(refuse(RefusalKind::kUnavailable, "the test refuses")) : Outcome<>();
    }

    mutable std::recursive_mutex mutex_;
    int depth_ = 0;
    std::atomic<std::thread::id> holder_{};
    std::vector<CallSnapshot> calls_;
    std::vector<std::string> asked_;
    std::atomic<int> nextCallID_{1001};
    std::atomic<bool> refuses_{false};
};

}  // namespace telephone
