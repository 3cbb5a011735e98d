// The telephone's call engine as lines and keys see it. Owned by the composition root beside the engine.
#pragma once

#include "telephone/calls/PhoneCalls.h"

namespace telephone {

class EngineCalls final : public PhoneCalls
{
public:
    explicit EngineCalls(CallEngine& engine)
        : engine_(engine)
    {}

    void lock() override { engine_.lock(); }
    void unlock() override { engine_.unlock(); }

    std::vector<CallSnapshot> calls() const override { return engine_.calls(); }
    std::optional<CallSnapshot> call(int callID) const override { return engine_.call(callID); }
    std::optional<CallSnapshot> activeCall() const override { return engine_.activeCall(); }
    int freeCallID() override { return engine_.freeCallID(); }

    sfiResult make(LineAddress const& place, int callID, std::string const& destination, CallPurpose purpose) override
    {
        return engine_.make(place.recordLine, place.appearance, callID, destination, purpose);
    }
    sfiResult answer(int callID) override { return engine_.answer(callID); }
    sfiResult clear(int callID) override { return engine_.clear(callID); }
    sfiResult hold(int callID) override
    {
        engine_.setHeldByHand(callID, true);
        return engine_.hold(callID);
    }
    sfiResult retrieve(int callID) override { return engine_.retrieve(callID); }
    sfiResult deflect(int callID, std::string const& destination) override
    {
        return engine_.deflect(callID, destination);
    }
    sfiResult blindTransfer(int callID, std::string const& destination) override
    {
        return engine_.blindTransfer(callID, destination);
    }
    sfiResult pickup(LineAddress const& place, int callID, std::string const& number) override
    {
        return engine_.directedPickup(place.recordLine, place.appearance, callID, number);
    }
    sfiResult takeOver(LineAddress const& place, int callID, PickupTarget const& target) override
    {
        return engine_.pickup(place.recordLine, place.appearance, callID, target);
    }
    void featureFailed(int recordLine, sfiFeature feature, sfiFeatureFailure failure) override
    {
        engine_.featureFailed(recordLine, feature, failure);
    }

private:
    CallEngine& engine_;
};

}  // namespace telephone
