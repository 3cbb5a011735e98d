// The part of call control that lines and keys use, as an interface, so that they work without a SIP stack. CallEngine
// implements it. Each operation takes the phone lock itself; std::lock_guard<PhoneCalls> brackets several.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/calls/CallPurpose.h"
#include "telephone/calls/CallSnapshot.h"
#include "telephone/calls/PickupTarget.h"

namespace telephone {

class PhoneCalls
{
public:
    virtual ~PhoneCalls() = default;

    virtual void lock() = 0;
    virtual void unlock() = 0;

    virtual std::vector<CallSnapshot> calls() const = 0;
    virtual std::optional<CallSnapshot> call(int callID) const = 0;
    virtual std::optional<CallSnapshot> activeCall() const = 0;
    virtual int freeCallID() = 0;

    [[nodiscard]] virtual Outcome<> make(LineAddress const& place, int callID, std::string const& destination,
                                         CallPurpose purpose) = 0;
    [[nodiscard]] virtual Outcome<> answer(int callID) = 0;
    [[nodiscard]] virtual Outcome<> clear(int callID) = 0;
    // As a key press asks for it: by hand.
    [[nodiscard]] virtual Outcome<> hold(int callID) = 0;
    [[nodiscard]] virtual Outcome<> retrieve(int callID) = 0;
    [[nodiscard]] virtual Outcome<> deflect(int callID, std::string const& destination) = 0;
    [[nodiscard]] virtual Outcome<> blindTransfer(int callID, std::string const& destination) = 0;
    // The call that rings at a number.
    [[nodiscard]] virtual Outcome<> pickup(LineAddress const& place, int callID, std::string const& number) = 0;
    // A call of another telephone that is known already.
    [[nodiscard]] virtual Outcome<> takeOver(LineAddress const& place, int callID, PickupTarget const& target) = 0;
    // Tells the applications that a feature failed on a line: for its active call, else for any of its calls, else for
    // the line alone. Line 0 is the whole telephone.
    virtual void featureFailed(int recordLine, sfiFeature feature, sfiFeatureFailure failure) = 0;
};

}  // namespace telephone
