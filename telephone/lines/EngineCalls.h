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

    Outcome<> make(LineAddress const& place, int callID, std::string const& destination, CallPurpose purpose) override
    {
        return outcomeOf(engine_.make(place.recordLine, place.appearance, callID, destination, purpose));
    }
    Outcome<> answer(int callID) override { return outcomeOf(engine_.answer(callID)); }
    Outcome<> clear(int callID) override { return outcomeOf(engine_.clear(callID)); }
    Outcome<> hold(int callID) override
    {
        engine_.setHeldByHand(callID, true);
        return outcomeOf(engine_.hold(callID));
    }
    Outcome<> retrieve(int callID) override { return outcomeOf(engine_.retrieve(callID)); }
    Outcome<> deflect(int callID, std::string const& destination) override
    {
        return outcomeOf(engine_.deflect(callID, destination));
    }
    Outcome<> blindTransfer(int callID, std::string const& destination) override
    {
        return outcomeOf(engine_.blindTransfer(callID, destination));
    }
    Outcome<> pickup(LineAddress const& place, int callID, std::string const& number) override
    {
        return outcomeOf(engine_.directedPickup(place.recordLine, place.appearance, callID, number));
    }
    Outcome<> takeOver(LineAddress const& place, int callID, PickupTarget const& target) override
    {
        return outcomeOf(engine_.pickup(place.recordLine, place.appearance, callID, target));
    }
    void featureFailed(int recordLine, sfiFeature feature, sfiFeatureFailure failure) override
    {
        engine_.featureFailed(recordLine, feature, failure);
    }

private:
    static Outcome<> outcomeOf(sfiResult result)
    {
        return result == sfiSuccess
                   ? Outcome<>()
                   : refuse(RefusalKind::kUnavailable, "the call control refused; its reason is in the log");
    }

    CallEngine& engine_;
};

}  // namespace telephone
