// The part of call control that lines and keys use, as an interface, so that they work without a SIP stack. CallEngine
// implements it. Each operation takes the phone lock itself; std::lock_guard<PhoneCalls> brackets several.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/calls/CallSnapshot.h"
#include "telephone/sip/Message.h"

namespace telephone {

// Why a call is made.
enum class CallPurpose : int
{
    kOrdinary,
    kConsultation,  // the call that it interrupts is held for it
};

// A call at another telephone that can be taken over, as that telephone's dialogs describe it (RFC 4235).
struct PickupTarget
{
    std::string targetURI;   // the far end of the ringing telephone: the party to call
    sip::Replaces replaces;  // the dialog there
    std::string callingURI;  // for the display
    std::string callingName;
    std::string calledURI;
    std::string calledName;
    bool joins = false;  // makes a call of three (RFC 3911) instead of replacing the dialog
};

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
    // A hold by hand, as a key press requests it.
    [[nodiscard]] virtual Outcome<> hold(int callID) = 0;
    [[nodiscard]] virtual Outcome<> retrieve(int callID) = 0;
    [[nodiscard]] virtual Outcome<> deflect(int callID, std::string const& destination) = 0;
    [[nodiscard]] virtual Outcome<> blindTransfer(int callID, std::string const& destination) = 0;
    // Takes over the call ringing at a number.
    [[nodiscard]] virtual Outcome<> pickup(LineAddress const& place, int callID, std::string const& number) = 0;
    // Takes over a known call of another telephone.
    [[nodiscard]] virtual Outcome<> takeOver(LineAddress const& place, int callID, PickupTarget const& target) = 0;
    // Tells the applications that a feature failed on a line: for its active call, else for any of its calls, else for
    // the line alone. Line 0 is the whole telephone.
    virtual void featureFailed(int recordLine, sfiFeature feature, sfiFeatureFailure failure) = 0;
};

}  // namespace telephone
