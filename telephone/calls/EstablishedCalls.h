// Operations on connected calls: hold, retrieve, alternate, digits. An active call is put on hold before another one
// becomes active. Owned by CallEngine.
//
// Operations by call id may be called from any thread and take the phone lock; the others are called with it held.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/calls/CallList.h"
#include "telephone/calls/LineDirectory.h"

namespace telephone {

class EstablishedCalls
{
public:
    EstablishedCalls(sip::EventLoop& loop, CallList& calls, LineDirectory const& lines);

    // --- any thread
    // feature: named by the event of a failure. Holding a held call is a success.
    [[nodiscard]] Outcome<> hold(int callID, sfiFeature feature = sfiFeatureHold);
    [[nodiscard]] Outcome<> retrieve(int callID, sfiFeature feature = sfiFeatureRetrieve);
    // Notes whether a person asked for the hold. Does nothing for a call that does not exist.
    void setHeldByHand(int callID, bool byHand);
    // Holds the active call and retrieves the call held last: on the line if possible, else on the telephone.
    [[nodiscard]] Outcome<> alternate(int recordLine);
    std::optional<CallSnapshot> lastHeldCall() const;
    [[nodiscard]] Outcome<> sendDigits(int callID, std::string const& digits);
    [[nodiscard]] Outcome<> changeSecurity(int callID, bool secure);

    // --- lock held
    // Holds every other call that speaks, then continues, with a refusal if one could not be held. Continues at once if
    // no other call speaks, and never if the call ends meanwhile.
    using Continuation = std::function<void(Call& call, Outcome<> const& alone)>;
    void afterHoldingOthers(Call& call, sfiFeature feature, Continuation const& continuation);
    // Ids of the held calls, the one held last at the end.
    std::vector<int> const& holdOrder() const { return holdOrder_; }
    void follow(CallSnapshot const& now);

private:
    Outcome<> retrieveAlone(Call& call, sfiFeature feature);

    sip::EventLoop& loop_;
    CallList& calls_;
    LineDirectory const& lines_;
    std::vector<int> holdOrder_;
};

}  // namespace telephone
